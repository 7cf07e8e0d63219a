// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#ifndef GOVD_TESTS_FUZZ_CHOICES_H
#define GOVD_TESTS_FUZZ_CHOICES_H

#include <QByteArray>
#include <QList>

#include <cstddef>
#include <cstring>

/// The bytes of an input, read from the front as decisions, so that a person can write an input
/// with an editor. After the last byte, every decision is the first choice.
class Choices
{
public:
    Choices(const unsigned char *data, std::size_t size)
        : m_bytes(reinterpret_cast<const char *>(data), int(size))
    {
    }

    bool isEnd() const { return m_next >= m_bytes.size(); }

    unsigned char byte() { return isEnd() ? 0 : static_cast<unsigned char>(m_bytes.at(m_next++)); }

    /// A number below @p count.
    int below(int count) { return byte() % count; }

    /// The next byte if it is one of @p letters, otherwise one of them chosen by its number.
    char letter(const char *letters)
    {
        const unsigned char chosen = byte();
        if (chosen != 0 && std::strchr(letters, chosen))
            return static_cast<char>(chosen);
        return letters[chosen % std::strlen(letters)];
    }

    /// A text whose length, at most 63, is the next byte.
    QByteArray text()
    {
        const int size = below(64);
        const QByteArray result = m_bytes.mid(m_next, size);
        m_next += result.size();
        return result;
    }

    template <typename Number> Number number()
    {
        Number result{};
        for (std::size_t i = 0; i < sizeof result; ++i)
            reinterpret_cast<unsigned char *>(&result)[i] = byte();
        return result;
    }

    const QByteArray &among(const QList<QByteArray> &known)
    {
        return known.at(below(known.size()));
    }

private:
    QByteArray m_bytes;
    int m_next = 0;
};

#endif
