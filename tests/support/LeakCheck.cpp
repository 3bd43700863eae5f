#include <chrono>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <thread>

namespace {

/// LeakSanitizer looks through the stacks of all threads when the process ends, and crashes over one that is just
/// ending itself ("Tracer caught signal 11"). Qt's pools tell such threads to end, and do not wait until they have.
class WaitForThreads
{
public:
    WaitForThreads() = default;
    WaitForThreads(const WaitForThreads &) = delete;
    WaitForThreads &operator=(const WaitForThreads &) = delete;

    ~WaitForThreads()
    {
        // Some libraries keep threads that never end. They stand still, and do no harm.
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        while (threads() > 1 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

private:
    static long threads()
    {
        std::error_code error;
        const std::filesystem::directory_iterator tasks("/proc/self/task", error);
        return error ? 1 : static_cast<long>(std::distance(tasks, std::filesystem::directory_iterator()));
    }
};

/// Made before anything a test uses, and so destroyed after all of it.
const WaitForThreads waitForThreads;

} // namespace
