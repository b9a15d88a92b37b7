#pragma once

#include <exception>

/// Internal to the library: whatever throws these converts them before they reach a client.
namespace foundation::ustring {

/// The root of failures to classify or map a character.
class CtypeExceptionBase : public std::exception {
public:
    const char* what() const noexcept override { return text_; }

    /// The kind of failure.
    int kind() const noexcept { return kind_; }

protected:
    /// `text` is a string literal.
    CtypeExceptionBase(const char* text, int kind) noexcept : text_(text), kind_(kind) {}

private:
    const char* text_;
    int kind_;
};

/// A code unit beyond ASCII in an operation on ASCII.
class CtypeInvalidCharacter : public CtypeExceptionBase {
public:
    CtypeInvalidCharacter() noexcept : CtypeExceptionBase("Invalid character error.", 3) {}
};

}  // namespace foundation::ustring
