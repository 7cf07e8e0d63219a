// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "client/arguments.h"

#include <limits>

#include <unistd.h>

namespace {

constexpr size_t Mebibyte = 1024 * 1024;
constexpr int DeepNesting = 20;

template <typename Value> Argument basic(char type, Value value)
{
    return {std::string(1, type), [type, value](sd_bus_message *message) {
                return sd_bus_message_append_basic(message, type, &value);
            }};
}

Argument text(char type, const std::string &value)
{
    return {std::string(1, type), [type, value](sd_bus_message *message) {
                return sd_bus_message_append_basic(message, type, value.c_str());
            }};
}

/// @p content inside a variant, an array or another container that holds one thing.
Argument inside(char container, const Argument &content)
{
    const std::string type = container == 'v' ? std::string("v") : container + content.type;
    return {type, [container, content](sd_bus_message *message) {
                const int opened =
                    sd_bus_message_open_container(message, container, content.type.c_str());
                if (opened < 0)
                    return opened;
                const int appended = content.append(message);
                return appended < 0 ? appended : sd_bus_message_close_container(message);
            }};
}

Argument emptyArray(const std::string &content)
{
    return {"a" + content, [content](sd_bus_message *message) {
                const int opened = sd_bus_message_open_container(message, 'a', content.c_str());
                return opened < 0 ? opened : sd_bus_message_close_container(message);
            }};
}

Argument map()
{
    return {"a{sv}", [](sd_bus_message *message) {
                return sd_bus_message_append(message, "a{sv}", 2, "one", "b", 1, "two", "as", 1,
                                             "x");
            }};
}

Argument structure()
{
    return {"(sib)", [](sd_bus_message *message) {
                return sd_bus_message_append(message, "(sib)", "text", 7, 1);
            }};
}

Argument nested(char container)
{
    Argument result = text('s', "inside");
    for (int depth = 0; depth < DeepNesting; ++depth)
        result = inside(container, result);
    return result;
}

std::vector<Argument> numbers()
{
    return {basic('y', uint8_t(200)),
            basic('n', std::numeric_limits<int16_t>::min()),
            basic('q', std::numeric_limits<uint16_t>::max()),
            basic('i', std::numeric_limits<int32_t>::min()),
            basic('u', std::numeric_limits<uint32_t>::max()),
            basic('x', std::numeric_limits<int64_t>::min()),
            basic('t', std::numeric_limits<uint64_t>::max()),
            basic('d', std::numeric_limits<double>::quiet_NaN()),
            basic('d', -std::numeric_limits<double>::infinity()),
            basic('b', 0),
            basic('b', 1),
            basic('h', STDIN_FILENO)};
}

std::vector<Argument> texts()
{
    return {text('s', ""),
            text('s', "CameraEnabled"),
            text('s', "cameraenabled"),
            text('s', "NoPolicy"),
            text('s', "line\nbreak %1%2%s%n \x1b[2J"),
            text('s', std::string(10000, 'k')),
            text('s', "org.kvt.PolicyManager.Policy"),
            text('o', "/"),
            text('o', "/org/kvt/PolicyManager"),
            text('g', ""),
            text('g', "a{s(iv)}")};
}

void append(std::vector<Argument> &list, const std::vector<Argument> &more)
{
    list.insert(list.end(), more.begin(), more.end());
}

} // namespace

std::vector<Argument> smallArguments()
{
    std::vector<Argument> plain = numbers();
    append(plain, texts());
    append(plain, {map(), structure(), emptyArray("s"), emptyArray("{sv}"), nested('a')});
    std::vector<Argument> result = plain;
    for (const Argument &each : plain)
        result.push_back(inside('v', each));
    result.push_back(inside('a', text('s', "alone")));
    result.push_back(nested('v'));
    return result;
}

std::vector<Argument> largeArguments()
{
    const Argument words = text('s', std::string(Mebibyte, 'm'));
    const Argument bytes{"ay", [](sd_bus_message *message) {
                             const std::string content(Mebibyte, '\0');
                             return sd_bus_message_append_array(message, 'y', content.data(),
                                                                content.size());
                         }};
    return {words, bytes, inside('v', words), inside('v', bytes)};
}

Argument sensibleArgument(char type)
{
    return type == 'v' ? inside('v', basic('b', 0)) : text('s', "CameraEnabled");
}
