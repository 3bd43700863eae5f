#include "Server.h"

#include "Connections.h"
#include "Request.h"
#include "Sandbox.h"

#include <chrono>

namespace kelp::sandbox {

namespace {

using namespace std::chrono_literals;

/// Each open connection takes one, hanging ones included; a browser opens six.
constexpr std::size_t threads = 64;
constexpr std::size_t largestRequest = 16 * 1024 * 1024;

Request read(const httplib::Request &from)
{
    Request request =
        Request::fromTarget(QByteArray::fromStdString(from.method), QByteArray::fromStdString(from.target));
    for (const auto &[name, value] : from.headers) {
        const QByteArray key = QByteArray::fromStdString(name).toLower();
        // The library adds these itself.
        if (key != "remote_addr" && key != "remote_port" && key != "local_addr" && key != "local_port")
            request.headers.append({key, QByteArray::fromStdString(value)});
    }
    request.body = QByteArray::fromStdString(from.body);
    return request;
}

} // namespace

Server::Server(Sandbox &sandbox) : m_sandbox(sandbox)
{
    const auto handler = [this](const httplib::Request &from, httplib::Response &to) { handle(from, to); };
    const std::string any = "[\\s\\S]*";
    m_http.Get(any, handler)
        .Post(any, handler)
        .Put(any, handler)
        .Patch(any, handler)
        .Delete(any, handler)
        .Options(any, handler);
    m_http.new_task_queue = [] { return new httplib::ThreadPool(threads); };
    m_http.set_payload_max_length(largestRequest);
    m_http.set_keep_alive_max_count(1000);
    m_http.set_tcp_nodelay(true);
    m_http.set_socket_options([](socket_t socket) {
        // The library's default would share the port with another process.
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
}

Server::~Server()
{
    stop();
}

std::optional<int> Server::start(int port)
{
    const bool isBound = port == 0 ? (m_port = m_http.bind_to_any_port("127.0.0.1")) > 0
                                   : m_http.bind_to_port("127.0.0.1", m_port = port);
    if (!isBound)
        return std::nullopt;
    m_isListening = true;
    m_thread = std::thread([this] {
        m_http.listen_after_bind();
        m_isListening = false;
    });
    // Before that, stop() would do nothing.
    while (m_isListening && !m_http.is_running())
        std::this_thread::sleep_for(1ms);
    return m_port;
}

void Server::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_stop.notify_all();
    m_http.stop();
    // A connection may just be on its way to its thread.
    while (m_isListening) {
        shutDownConnections(m_port);
        std::this_thread::sleep_for(5ms);
    }
    if (m_thread.joinable())
        m_thread.join();
}

void Server::handle(const httplib::Request &from, httplib::Response &to)
{
    const Answer answer = m_sandbox.answer(read(from));
    to.status = answer.status;
    for (const auto &[name, value] : answer.headers)
        to.set_header(name.constData(), value.toStdString());
    deliver(answer, from, to);
}

void Server::deliver(const Answer &answer, const httplib::Request &from, httplib::Response &to)
{
    switch (answer.delivery) {
    case Answer::Delivery::whole:
        to.set_content(answer.body.toStdString(), answer.contentType.constData());
        break;
    case Answer::Delivery::drip:
        drip(answer, to);
        break;
    case Answer::Delivery::reset:
        reset(answer, from.remote_port, to);
        break;
    case Answer::Delivery::hang:
        hang(from.remote_port);
        break;
    }
}

void Server::hang(int remotePort)
{
    while (pause(0.05) && !isAbandoned(m_port, remotePort)) {
    }
    resetConnection(m_port, remotePort);
}

void Server::drip(const Answer &answer, httplib::Response &to)
{
    to.set_content_provider(
        answer.contentType.toStdString(),
        [this, body = answer.body, interval = answer.dripInterval](size_t offset, httplib::DataSink &sink) {
            const auto index = static_cast<qsizetype>(offset);
            const char byte = index < body.size() ? body[index] : ' ';
            return sink.is_writable() && sink.write(&byte, 1) && pause(interval);
        });
}

void Server::reset(const Answer &answer, int remotePort, httplib::Response &to)
{
    const std::string half = answer.body.left(answer.body.size() / 2).toStdString();
    to.set_content_provider(static_cast<size_t>(answer.body.size()), answer.contentType.toStdString(),
                            [this, half, remotePort](size_t offset, size_t, httplib::DataSink &sink) {
                                if (offset == 0)
                                    return sink.write(half.data(), half.size());
                                resetConnection(m_port, remotePort);
                                return false;
                            });
}

bool Server::pause(double seconds)
{
    std::unique_lock lock(m_mutex);
    return !m_stop.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return m_isStopping; });
}

} // namespace kelp::sandbox
