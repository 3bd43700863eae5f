#pragma once

#include "Answer.h"

#include <httplib.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace kelp::sandbox {

class Sandbox;

/// Lets a sandbox be reached at a port of 127.0.0.1, over threads of its own. Not to be started twice.
class Server
{
public:
    explicit Server(Sandbox &sandbox);
    /// Stops.
    ~Server();

    /// Listens at `port`, or at a free one where it is 0. Returns the port as soon as connections are accepted, or
    /// nothing where it cannot be had.
    [[nodiscard]] std::optional<int> start(int port);
    /// Ends all connections at once, hanging and dripping ones too.
    void stop();

private:
    void handle(const httplib::Request &from, httplib::Response &to);
    void deliver(const Answer &answer, const httplib::Request &from, httplib::Response &to);
    void hang(int remotePort);
    void drip(const Answer &answer, httplib::Response &to);
    void reset(const Answer &answer, int remotePort, httplib::Response &to);
    /// Waits, unless the server stops meanwhile; returns whether it may go on.
    [[nodiscard]] bool pause(double seconds);

    Sandbox &m_sandbox;
    httplib::Server m_http;
    int m_port = 0;
    std::thread m_thread;
    std::atomic<bool> m_isListening = false;
    std::mutex m_mutex;
    std::condition_variable m_stop;
    bool m_isStopping = false;
};

} // namespace kelp::sandbox
