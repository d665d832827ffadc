#include "platform/TypedJson.h"

#include "platform/Utf8.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <system_error>

namespace quorbel::testing {

namespace {

class TypedJsonReader {
public:
    explicit TypedJsonReader(std::string_view json) : m_rest(json) {}

    Value readAll() {
        Value value = typed();
        skipSpace();
        require(m_rest.empty());
        return value;
    }

private:
    static void require(bool condition) {
        if (!condition) {
            throw std::runtime_error("no typed JSON");
        }
    }

    void skipSpace() {
        m_rest.remove_prefix(std::min(m_rest.find_first_not_of(" \t\r\n"), m_rest.size()));
    }

    bool take(std::string_view token) {
        skipSpace();
        const bool isNext = m_rest.starts_with(token);
        m_rest.remove_prefix(isNext ? token.size() : 0);
        return isNext;
    }

    template <typename Number>
    Number number() {
        skipSpace();
        Number number{};
        const auto [end, error] =
            std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), number);
        require(error == std::errc());
        m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
        return number;
    }

    char32_t hexUnit() {
        std::uint32_t unit = 0;
        require(m_rest.size() >= 4);
        const auto [end, error] = std::from_chars(m_rest.data(), m_rest.data() + 4, unit, 16);
        require(error == std::errc() && end == m_rest.data() + 4);
        m_rest.remove_prefix(4);
        return unit;
    }

    char32_t escaped() {
        char32_t code = hexUnit();
        if (code >= 0xD800 && code < 0xDC00) {
            require(m_rest.starts_with("\\u"));
            m_rest.remove_prefix(2);
            code = 0x10000 + ((code - 0xD800) << 10) + (hexUnit() - 0xDC00);
        }
        return code;
    }

    std::string string() {
        constexpr std::string_view kNames = "bfnrt\"\\/";
        constexpr std::string_view kMeanings = "\b\f\n\r\t\"\\/";
        require(take("\""));
        std::string text;
        while (!m_rest.starts_with('"')) {
            require(m_rest.size() > 1);
            const char first = m_rest.front();
            const char second = m_rest[1];
            if (first != '\\') {
                text += first;
                m_rest.remove_prefix(1);
                continue;
            }
            m_rest.remove_prefix(2);
            if (second == 'u') {
                appendUtf8(text, escaped());
            } else {
                require(kNames.find(second) != std::string_view::npos);
                text += kMeanings[kNames.find(second)];
            }
        }
        m_rest.remove_prefix(1);
        return text;
    }

    double real() {
        skipSpace();
        if (!m_rest.starts_with('"')) {
            return number<double>();
        }
        const std::string name = string();
        require(name == "inf" || name == "-inf");
        return name == "inf" ? std::numeric_limits<double>::infinity()
                             : -std::numeric_limits<double>::infinity();
    }

    std::string base64() {
        constexpr std::string_view kAlphabet =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string bytes;
        std::uint32_t bits = 0;
        unsigned count = 0;
        for (const char character : string()) {
            if (character == '=') {
                break;
            }
            const std::size_t digit = kAlphabet.find(character);
            require(digit != std::string_view::npos);
            bits = bits << 6 | static_cast<std::uint32_t>(digit);
            count += 6;
            if (count >= 8) {
                count -= 8;
                bytes += static_cast<char>(bits >> count & 0xFF);
            }
        }
        return bytes;
    }

    Array array() {
        Array elements;
        require(take("["));
        while (!take("]")) {
            elements.push_back(typed());
            take(",");
        }
        return elements;
    }

    Dictionary dictionary() {
        Dictionary pairs;
        require(take("{"));
        while (!take("}")) {
            std::string key = string();
            require(take(":"));
            pairs.append(std::move(key), typed());
            take(",");
        }
        return pairs;
    }

    Value content(std::string_view type) {
        if (type == "bool") {
            const bool isTrue = take("true");
            require(isTrue || take("false"));
            return isTrue;
        }
        if (type == "int") {
            skipSpace();
            return m_rest.starts_with('-') ? Value(number<std::int64_t>())
                                           : Value(number<std::uint64_t>());
        }
        if (type == "real") {
            return real();
        }
        if (type == "date") {
            return Date::fromSecondsSince1970(real());
        }
        if (type == "string") {
            return string();
        }
        if (type == "data") {
            return Data{base64()};
        }
        require(type == "array" || type == "dict");
        return type == "array" ? Value(array()) : Value(dictionary());
    }

    Value typed() {
        require(take("{") && string() == "t" && take(":"));
        const std::string type = string();
        Value value;
        if (take(",")) {
            require(string() == "v" && take(":"));
            value = content(type);
        } else {
            require(type == "null");
        }
        require(take("}"));
        return value;
    }

    std::string_view m_rest;
};

}  // namespace

Value valueFromTypedJson(std::string_view json) {
    return TypedJsonReader(json).readAll();
}

}  // namespace quorbel::testing
