/// @file
/// What a call gives: a value, or a code with the reason.
#ifndef TARNEL_RESULT_HPP
#define TARNEL_RESULT_HPP

#include <tarnel/diagnostics.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace tarnel {

/// A call that has failed, as an exception: thrown by the access to the value of its result.
class Error : public std::runtime_error
{
public:
    Error(unsigned int code, const std::string &reason)
        : std::runtime_error(tarnelCodeName(code) + (reason.empty() ? reason : ": " + reason)), m_code(code)
    {
    }

    /// A `TarnelResult`.
    [[nodiscard]] unsigned int code() const noexcept { return m_code; }

private:
    unsigned int m_code;
};

template <class Value>
class Result;

/// Whether a call has done what it was asked for.
template <>
class [[nodiscard]] Result<void>
{
public:
    /// Of a call that was made on this thread and has just returned `code`.
    Result(unsigned int code) : m_code(code), m_reason(code == TARNEL_SUCCESS ? "" : tarnelReason()) {}
    Result(unsigned int code, std::string reason) : m_code(code), m_reason(std::move(reason)) {}

    [[nodiscard]] bool ok() const noexcept { return m_code == TARNEL_SUCCESS; }
    explicit operator bool() const noexcept { return ok(); }
    /// A `TarnelResult`.
    [[nodiscard]] unsigned int code() const noexcept { return m_code; }
    /// Why it failed, in UTF-8, for people.
    [[nodiscard]] const std::string &reason() const noexcept { return m_reason; }
    [[nodiscard]] Error error() const { return {m_code, m_reason}; }

    /// Throws an `Error` if the call has failed.
    void value() const
    {
        if (!ok())
            throw error();
    }

private:
    unsigned int m_code;
    std::string m_reason;
};

/// What a call hands out, if it has succeeded. Any access to the value of one that has failed throws an `Error`, but
/// for `get`. A range without elements is no failure: `ok` with the code TARNEL_NOT_FOUND.
template <class Value>
class [[nodiscard]] Result
{
public:
    Result(Value value, unsigned int code = TARNEL_SUCCESS) : m_status(code, ""), m_value(std::move(value)) {}
    Result(Result<void> failure) : m_status(std::move(failure)) {}

    [[nodiscard]] bool ok() const noexcept { return m_value.has_value(); }
    explicit operator bool() const noexcept { return ok(); }
    [[nodiscard]] unsigned int code() const noexcept { return m_status.code(); }
    [[nodiscard]] const std::string &reason() const noexcept { return m_status.reason(); }
    [[nodiscard]] Error error() const { return m_status.error(); }

    /// Null if the call has failed.
    [[nodiscard]] const Value *get() const noexcept { return ok() ? &*m_value : nullptr; }

    const Value &value() const &
    {
        if (!ok())
            throw error();
        return *m_value;
    }
    /// By value, so that a loop may run over the result of a call.
    Value value() &&
    {
        if (!ok())
            throw error();
        return std::move(*m_value);
    }
    [[nodiscard]] const Value &operator*() const & { return value(); }
    [[nodiscard]] Value operator*() && { return std::move(*this).value(); }

    /// The value, or what it leads to itself: a member of a record is `result->name`.
    [[nodiscard]] decltype(auto) operator->() const
    {
        if constexpr (isPointer<Value>(0))
            return value();
        else
            return &value();
    }

private:
    template <class Type>
    static constexpr auto isPointer(int) -> decltype(std::declval<Type>().operator->(), true)
    {
        return true;
    }
    template <class Type>
    static constexpr bool isPointer(...)
    {
        return false;
    }

    Result<void> m_status;
    std::optional<Value> m_value;
};

} // namespace tarnel

#endif
