// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "tests/fuzz/randomvalue.h"

#include "tests/fuzz/check.h"

#include <unistd.h>

namespace RandomValue {

namespace {

constexpr char Basic[] = "ybnqiuxtdsog";
constexpr char Any[] = "ybnqiuxtdsogva(h";
constexpr char AnyDeeper[] = "ybnqiuxtdsogva(";
constexpr int DeepestDescriptor = 1; ///< the bus disconnects a client that sends more than 16
constexpr int Deepest = 12; ///< of a signature; variants make values deeper
constexpr int Longest = 80; ///< three of them fit into the 255 letters of a message's signature
constexpr int DeepestVariant = 4;

QByteArray signatureAt(Choices &choices, int depth)
{
    if (depth >= Deepest)
        return QByteArray(1, choices.letter(Basic));
    const char type = choices.letter(depth > DeepestDescriptor ? AnyDeeper : Any);
    if (type == '(') {
        QByteArray members = signatureAt(choices, depth + 1);
        for (int more = choices.below(4); more > 0; --more)
            members += signatureAt(choices, depth + 1);
        return '(' + members + ')';
    }
    if (type != 'a')
        return QByteArray(1, type);
    if (choices.below(2) == 0)
        return 'a' + signatureAt(choices, depth + 1);
    return QByteArray("a{") + choices.letter(Basic) + signatureAt(choices, depth + 2) + '}';
}

QByteArray signatureFrom(Choices &choices, int depth)
{
    const QByteArray signature = signatureAt(choices, depth);
    return signature.size() > Longest ? QByteArrayLiteral("ay") : signature;
}

/// The length of the first type in @p signature.
int lengthOfType(const QByteArray &signature)
{
    if (signature.startsWith('a'))
        return 1 + lengthOfType(signature.mid(1));
    int open = 0;
    for (int i = 0; i < signature.size(); ++i) {
        const char each = signature.at(i);
        open += (each == '(' || each == '{') - (each == ')' || each == '}');
        if (open == 0)
            return i + 1;
    }
    return signature.size();
}

/// Writes values into one message.
class Writer
{
public:
    Writer(sd_bus_message *message, Choices &choices, const QList<QByteArray> &known)
        : m_message(message)
        , m_choices(choices)
        , m_known(known)
    {
    }

    void write(QByteArray signature, int depth)
    {
        while (!signature.isEmpty()) {
            const int length = lengthOfType(signature);
            writeOne(signature.left(length), depth);
            signature.remove(0, length);
        }
    }

private:
    void writeOne(const QByteArray &type, int depth)
    {
        switch (type.at(0)) {
        case 'a':
            open('a', type.mid(1));
            for (int count = m_choices.below(5); count > 0; --count)
                write(type.mid(1), depth);
            break;
        case '(':
            open('r', type.mid(1, type.size() - 2));
            write(type.mid(1, type.size() - 2), depth);
            break;
        case '{':
            open('e', type.mid(1, type.size() - 2));
            write(type.mid(1, type.size() - 2), depth);
            break;
        case 'v': {
            const QByteArray content = contentOfVariant(depth);
            open('v', content);
            write(content, depth + 1);
            break;
        }
        default:
            writeBasic(type.at(0));
            return;
        }
        requireDone(sd_bus_message_close_container(m_message), "close");
    }

    /// Known texts are given for properties, whose usual types are then chosen more often.
    QByteArray contentOfVariant(int depth)
    {
        if (depth == DeepestVariant)
            return "y";
        if (!m_known.isEmpty() && m_choices.below(3) != 0)
            return m_choices.among({"s", "b", "o", "ay", "aay"});
        return signatureFrom(m_choices, 1 + DeepestDescriptor + 3 * depth);
    }

    void open(char type, const QByteArray &content)
    {
        requireDone(sd_bus_message_open_container(m_message, type, content.constData()), "open");
    }

    void writeBasic(char type)
    {
        switch (type) {
        case 's':
        case 'o':
        case 'g':
            writeText(type);
            break;
        case 'b': {
            const int value = m_choices.below(2);
            put(type, &value);
            break;
        }
        case 'h': {
            const int value = STDERR_FILENO;
            put(type, &value);
            break;
        }
        default: {
            const auto value = m_choices.number<quint64>();
            put(type, &value);
        }
        }
    }

    void put(char type, const void *value)
    {
        requireDone(sd_bus_message_append_basic(m_message, type, value), "append");
    }

    /// What the bus does not take for such a text is replaced.
    void writeText(char type)
    {
        const bool isKnown = !m_known.isEmpty() && m_choices.below(2) == 0;
        const QByteArray text = isKnown ? m_choices.among(m_known) : m_choices.text();
        if (sd_bus_message_append_basic(m_message, type, text.constData()) < 0)
            put(type, type == 'o' ? "/" : "");
    }

    sd_bus_message *m_message;
    Choices &m_choices;
    const QList<QByteArray> &m_known;
};

QByteArray describeBasic(sd_bus_message *message, char type)
{
    if (type == 's' || type == 'o' || type == 'g') {
        const char *text = nullptr;
        requireDone(sd_bus_message_read_basic(message, type, &text), "read");
        return QByteArray(text).toHex();
    }
    quint64 bits = 0;
    requireDone(sd_bus_message_read_basic(message, type, &bits), "read");
    // A file descriptor has another number in each process.
    return type == 'h' ? QByteArray("fd") : QByteArray::number(bits, 16);
}

} // namespace

QByteArray signature(Choices &choices)
{
    return signatureFrom(choices, 0);
}

void append(sd_bus_message *message, const QByteArray &signature, Choices &choices,
            const QList<QByteArray> &known)
{
    Writer(message, choices, known).write(signature, 0);
}

QByteArray describe(sd_bus_message *message)
{
    QByteArray text;
    char type = 0;
    const char *content = nullptr;
    int result = 0;
    while ((result = sd_bus_message_peek_type(message, &type, &content)) > 0) {
        text += type;
        if (!content) {
            text += describeBasic(message, type) + ' ';
            continue;
        }
        const QByteArray signature = content; // gone once it is entered
        requireDone(sd_bus_message_enter_container(message, type, signature.constData()), "enter");
        text += signature + '<' + describe(message) + '>';
        requireDone(sd_bus_message_exit_container(message), "exit");
    }
    requireDone(result, "peek");
    return text;
}

} // namespace RandomValue
