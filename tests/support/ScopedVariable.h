#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace quorbel::testing {

/// Sets or (without a value) removes a variable of the environment, until the end of the scope.
class ScopedVariable {
public:
    ScopedVariable(const char *name, const std::optional<std::string> &value) : m_name(name) {
        if (const char *before = std::getenv(name)) {
            m_before = before;
        }
        assign(value);
    }
    ~ScopedVariable() { assign(m_before); }
    ScopedVariable(const ScopedVariable &) = delete;
    ScopedVariable &operator=(const ScopedVariable &) = delete;

private:
    void assign(const std::optional<std::string> &value) const {
        if (value) {
            ::setenv(m_name, value->c_str(), 1);
        } else {
            ::unsetenv(m_name);
        }
    }

    const char *m_name;
    std::optional<std::string> m_before;
};

}  // namespace quorbel::testing
