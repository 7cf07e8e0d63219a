// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "benchmark/load/load.h"

#include <exception>
#include <memory>

namespace {

constexpr uint64_t Forever = UINT64_MAX;

/// Makes calls and keeps several of them without a reply.
class Pipeline
{
public:
    Pipeline(sd_bus *bus, const Operation &operation, unsigned count)
        : m_bus(bus)
        , m_operation(operation)
        , m_started(count)
        , m_latencies(count)
    {
    }

    Latencies run(unsigned outstanding);

private:
    struct Call
    {
        Pipeline *pipeline;
        Clock::time_point sent;
    };

    void send();
    void wait();
    static int receive(sd_bus_message *reply, void *userData, sd_bus_error *error);

    sd_bus *m_bus;
    const Operation &m_operation;
    std::vector<Call> m_started;
    unsigned m_sent = 0;
    unsigned m_answered = 0;
    std::exception_ptr m_failure;
    Latencies m_latencies;
};

void Pipeline::send()
{
    const Bus::Message message = m_operation.call(m_bus, m_sent);
    Call &call = m_started[m_sent++];
    call = {this, Clock::now()};
    Bus::check(sd_bus_call_async(m_bus, nullptr, message.get(), receive, &call, Forever),
               "cannot send a call");
}

int Pipeline::receive(sd_bus_message *reply, void *userData, sd_bus_error *)
{
    const auto *call = static_cast<Call *>(userData);
    Pipeline &pipeline = *call->pipeline;
    pipeline.m_latencies.add(Clock::now() - call->sent);
    ++pipeline.m_answered;
    try {
        pipeline.m_operation.verify(reply, sd_bus_message_get_error(reply));
    } catch (...) { // an exception must not pass through the C library
        pipeline.m_failure = std::current_exception();
    }
    return 0;
}

void Pipeline::wait()
{
    while (Bus::check(sd_bus_process(m_bus, nullptr), "cannot read from the bus") > 0) { }
    if (m_failure)
        std::rethrow_exception(m_failure);
}

Latencies Pipeline::run(unsigned outstanding)
{
    const Clock::time_point begin = Clock::now();
    const unsigned count = static_cast<unsigned>(m_started.size());
    while (m_answered < count) {
        while (m_sent < count && m_sent - m_answered < outstanding)
            send();
        const unsigned before = m_answered;
        wait();
        if (m_answered == before)
            Bus::check(sd_bus_wait(m_bus, Forever), "cannot wait for the bus");
    }
    m_latencies.setTotal(Clock::now() - begin);
    return m_latencies;
}

} // namespace

Latencies callInTurn(sd_bus *bus, const Operation &operation, unsigned count)
{
    Latencies latencies(count);
    const Clock::time_point begin = Clock::now();
    for (unsigned index = 0; index < count; ++index) {
        const Clock::time_point sent = Clock::now();
        const Bus::Message message = operation.call(bus, index);
        Bus::Error error;
        sd_bus_message *reply = nullptr;
        sd_bus_call(bus, message.get(), Forever, error.slot(), &reply);
        latencies.add(Clock::now() - sent);
        const Bus::Message owner(reply);
        operation.verify(reply, error.slot());
    }
    latencies.setTotal(Clock::now() - begin);
    return latencies;
}

Latencies callAhead(sd_bus *bus, const Operation &operation, unsigned count, unsigned outstanding)
{
    return Pipeline(bus, operation, count).run(outstanding);
}
