#pragma once

// Without <concepts>: moc cannot read that of GCC 12 where a file starts with it.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace quorbel {

class Value;

/// The explicit "no value" that a collection can hold; not the same as an absent key.
struct Null {
    bool operator==(const Null &) const = default;
};

/// Bytes without a meaning of their own.
struct Data {
    std::string bytes;
    bool operator==(const Data &) const = default;
};

/// A moment. Kept against the epoch of the archive format, so that reading and writing one again
/// changes no bit of it.
struct Date {
    static constexpr double kUnixEpochOffset = 978307200.0;  // 1970 to 2001, in seconds

    double secondsSince2001 = 0.0;

    static Date fromSecondsSince1970(double seconds) { return {seconds - kUnixEpochOffset}; }
    [[nodiscard]] double secondsSince1970() const { return secondsSince2001 + kUnixEpochOffset; }
    bool operator==(const Date &) const = default;
};

using Array = std::vector<Value>;

/// A string-keyed map that keeps the order in which keys were added.
///
/// Look-up walks the entries: it is meant for dictionaries of up to a few hundred keys. Larger ones
/// are built with append() and read by walking.
class Dictionary {
public:
    using Entry = std::pair<std::string, Value>;

    Dictionary();
    Dictionary(std::initializer_list<Entry> entries);
    Dictionary(const Dictionary &);
    Dictionary(Dictionary &&) noexcept;
    Dictionary &operator=(const Dictionary &);
    Dictionary &operator=(Dictionary &&) noexcept;
    ~Dictionary();

    /// The value of a key, or null when the key is absent. Valid until the dictionary changes.
    [[nodiscard]] const Value *find(std::string_view key) const;
    /// Replaces the value in its place, or adds the key at the end.
    void set(std::string_view key, Value value);
    /// Adds a key that the caller knows to be absent, without looking for it.
    void append(std::string key, Value value);
    /// Returns whether the key was there.
    bool remove(std::string_view key);

    void reserve(std::size_t count);
    [[nodiscard]] std::size_t size() const;
    [[nodiscard]] bool empty() const;
    [[nodiscard]] const Entry *begin() const;
    [[nodiscard]] const Entry *end() const;

    /// Equal when both hold the same keys with equal values, in any order.
    bool operator==(const Dictionary &other) const;

private:
    std::vector<Entry> m_entries;
};

/// An object of a class that has no counterpart here, carried from one archive to the next.
struct ForeignObject {
    struct Field {
        std::string name;
        bool isReference = false;  ///< whether the archive held a reference or the value in place
        std::shared_ptr<const Value> value;  ///< null for a reference to nil
        bool operator==(const Field &) const;
    };
    std::vector<std::string> classes;  ///< its class, then its ancestors
    std::vector<Field> fields;
    bool operator==(const ForeignObject &) const = default;
};

/// A property-list value: what settings, commands and their archives are made of.
///
/// A plain value type: copies are deep, equality is by type and content, so true, 1 and 1.0 differ.
class Value {
public:
    enum class Type {
        kNull,
        kBoolean,
        kInteger,
        kUnsigned,  ///< only for integers above the largest signed 64-bit one
        kReal,
        kString,
        kData,
        kDate,
        kArray,
        kDictionary,
        kForeign,
    };

    // The conversions are implicit on purpose: dictionaries read as they are written.
    Value() = default;
    Value(Null) {}  // NOLINT(google-explicit-constructor)
    template <class T>
    requires std::is_same_v<T, bool> Value(T value) : m_content(value) {}
    template <class T>
    requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) Value(T value)
        : m_content(fromInteger(value)) {}
    Value(double value) : m_content(value) {}
    Value(const char *text) : m_content(std::string(text)) {}
    Value(std::string_view text) : m_content(std::string(text)) {}
    Value(std::string text) : m_content(std::move(text)) {}
    Value(Data data) : m_content(std::move(data)) {}
    Value(Date date) : m_content(date) {}
    Value(Array array) : m_content(std::move(array)) {}
    Value(Dictionary dictionary) : m_content(std::move(dictionary)) {}
    Value(ForeignObject object) : m_content(std::move(object)) {}

    [[nodiscard]] Type type() const { return static_cast<Type>(m_content.index()); }

    // The content when the value is of that type, else null.
    [[nodiscard]] const bool *boolean() const { return std::get_if<bool>(&m_content); }
    [[nodiscard]] const std::int64_t *integer() const {
        return std::get_if<std::int64_t>(&m_content);
    }
    [[nodiscard]] const std::uint64_t *unsignedInteger() const {
        return std::get_if<std::uint64_t>(&m_content);
    }
    [[nodiscard]] const double *real() const { return std::get_if<double>(&m_content); }
    [[nodiscard]] const std::string *string() const { return std::get_if<std::string>(&m_content); }
    [[nodiscard]] const Data *data() const { return std::get_if<Data>(&m_content); }
    [[nodiscard]] const Date *date() const { return std::get_if<Date>(&m_content); }
    [[nodiscard]] const Array *array() const { return std::get_if<Array>(&m_content); }
    [[nodiscard]] const Dictionary *dictionary() const {
        return std::get_if<Dictionary>(&m_content);
    }
    [[nodiscard]] const ForeignObject *foreign() const {
        return std::get_if<ForeignObject>(&m_content);
    }

    bool operator==(const Value &other) const;

private:
    template <class T>
    static std::variant<Null, bool, std::int64_t, std::uint64_t, double, std::string, Data, Date,
                        Array, Dictionary, ForeignObject>
    fromInteger(T value) {
        if (std::in_range<std::int64_t>(value)) {
            return static_cast<std::int64_t>(value);
        }
        return static_cast<std::uint64_t>(value);
    }

    // In the order of Type.
    std::variant<Null, bool, std::int64_t, std::uint64_t, double, std::string, Data, Date, Array,
                 Dictionary, ForeignObject>
        m_content;
};

}  // namespace quorbel
