#include "base/Memory.h"

#include <QTest>

#include <algorithm>
#include <vector>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <unistd.h>

using namespace kelp;

class tst_Memory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void freshPagesAreThereAtOnce_data();
    void freshPagesAreThereAtOnce();
    void whatIsWrittenStays();
    void nothingIsFine();
};

namespace {

const auto pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
constexpr std::size_t pages = 500;

long interruptions()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

} // namespace

void tst_Memory::freshPagesAreThereAtOnce_data()
{
    QTest::addColumn<bool>("shared");
    QTest::newRow("of its own") << false;
    QTest::newRow("shared with the display server") << true;
}

/// Writing to them interrupts the system no more, or hardly: it has had them all. AddressSanitizer has notes of its own
/// about memory, a page of them for eight.
void tst_Memory::freshPagesAreThereAtOnce()
{
    QFETCH(bool, shared);
    const std::size_t bytes = pages * pageSize;
    void *memory = nullptr;
    if (shared) {
        const int id = ::shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
        memory = ::shmat(id, nullptr, 0);
        ::shmctl(id, IPC_RMID, nullptr);
    } else {
        memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    }
    QVERIFY(memory != MAP_FAILED);
    memory::populate(memory, bytes);
    const long before = interruptions();
    auto *first = static_cast<volatile char *>(memory);
    for (std::size_t page = 0; page < pages; ++page)
        first[page * pageSize] = 1;
    const long after = interruptions();
    if (shared)
        ::shmdt(memory);
    else
        ::munmap(memory, bytes);
    QVERIFY2(after - before < static_cast<long>(pages) / 4, qPrintable(QString::number(after - before)));
}

/// Also where the memory begins and ends within a page that has other things on it.
void tst_Memory::whatIsWrittenStays()
{
    std::vector<char> memory(20 * pageSize);
    for (std::size_t i = 0; i < memory.size(); ++i)
        memory[i] = static_cast<char>(i % 127);
    const std::vector<char> before = memory;
    memory::populate(memory.data() + 100, memory.size() - 300);
    QVERIFY(memory == before);
}

void tst_Memory::nothingIsFine()
{
    char one = 'x';
    memory::populate(nullptr, 0);
    memory::populate(&one, 1);
    QCOMPARE(one, 'x');
}

QTEST_GUILESS_MAIN(tst_Memory)

#include "tst_Memory.moc"
