// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/worker.h"

#include "client/client.h"

#include <cmath>
#include <cstdio>
#include <random>

namespace {

constexpr int BooleanKeys = 5; // one of so many
constexpr double Small = 1e-8; // so small that the boolean reading of every number is false

using Random = std::mt19937;

int draw(Random &random, int below)
{
    return static_cast<int>(random() % static_cast<unsigned>(below));
}

/// The value in a reader's answer as it is printed.
std::string valueIn(const Bus::Message &answer)
{
    const char *types = nullptr;
    if (sd_bus_message_get_error(answer.get())
        || sd_bus_message_peek_type(answer.get(), nullptr, &types) <= 0)
        return describe(answer);
    const char type = types[0];
    Bus::check(sd_bus_message_enter_container(answer.get(), 'v', types), "variant");
    int number = 0;
    double fraction = 0;
    void *target = type == 'd' ? static_cast<void *>(&fraction) : &number;
    Bus::check(sd_bus_message_read_basic(answer.get(), type, target), "value");
    if (type == 'b')
        return number ? "true" : "false";
    return type == 'd' ? '~' + std::to_string(std::lround(fraction / Small))
                       : std::to_string(number);
}

class Worker
{
public:
    explicit Worker(const Work &work)
        : m_work(work)
        , m_random(work.seed)
    {
    }

    void run()
    {
        for (m_call = 0; m_call < m_work.calls; ++m_call) {
            const size_t key = m_random() % m_work.keys.size();
            if (draw(m_random, 100) < m_work.odd)
                callOddly();
            else if (draw(m_random, 100) < 40)
                read(m_work.keys[key].c_str());
            else if (key % BooleanKeys == 0)
                writeBoolean(m_work.keys[key].c_str());
            else
                writeNumber(m_work.keys[key].c_str());
        }
    }

private:
    void read(const char *key)
    {
        std::printf("r %s %s\n", key, valueIn(m_client.call(m_client.read(key))).c_str());
    }

    void writeBoolean(const char *key)
    {
        const int value = draw(m_random, 2);
        report(key, value ? "true" : "false", m_client.write(key, 'b', &value));
    }

    void writeNumber(const char *key)
    {
        const int number = m_work.firstNumber + m_call;
        const double fraction = number * Small;
        if (draw(m_random, 2))
            report(key, std::to_string(number), m_client.write(key, 'i', &number));
        else
            report(key, '~' + std::to_string(number), m_client.write(key, 'd', &fraction));
    }

    void report(const char *key, const std::string &value, const Bus::Message &message)
    {
        const std::string outcome = describe(m_client.call(message));
        std::printf("w %s %s %s\n", key, value.c_str(), outcome.c_str());
    }

    void callOddly()
    {
        static constexpr const char *Odd[][2] = {
            {"org.freedesktop.DBus.Introspectable", "Introspect"},
            {"org.freedesktop.DBus.Peer", "Ping"},
            {"org.kvt.PolicyManager.Policy", "SetKeyValue"}, // without arguments
            {"org.kvt.PolicyManager.Policy", "setPolicyValue"},
            {"org.kvt.PolicyManager.Switch", "Keys"},
            {"org.example.Nobody", "KeyValue"},
        };
        const auto &odd = Odd[m_random() % std::size(Odd)];
        m_client.call(m_client.method(odd[0], odd[1]));
    }

    const Work m_work;
    Random m_random;
    const Client m_client;
    int m_call = 0;
};

} // namespace

int work(const Work &work)
{
    Worker(work).run();
    return 0;
}
