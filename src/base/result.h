#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "base/status.h"

namespace kelvane {

// Why an operation failed: a status for the program, words for the user.
struct Failure {
    Status status = kError;
    std::string message;
};

// What an operation answers: a value, or why there is none.
template <class Value = void>
class [[nodiscard]] Result {
public:
    Result(Value value) : fHeld(std::move(value)) {}
    Result(Failure failure) : fHeld(std::move(failure)) {}

    explicit operator bool() const { return fHeld.index() == 0; }
    // Only of a result that has one.
    Value& operator*() { return std::get<0>(fHeld); }
    const Value& operator*() const { return std::get<0>(fHeld); }
    Value* operator->() { return &std::get<0>(fHeld); }
    // Only of a result without a value.
    const Failure& Error() const { return std::get<1>(fHeld); }

private:
    std::variant<Value, Failure> fHeld;
};

// The same of an operation that has nothing to give.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Failure failure) : fFailure(std::move(failure)) {}

    explicit operator bool() const { return !fFailure; }
    const Failure& Error() const { return *fFailure; }

private:
    std::optional<Failure> fFailure;
};

}  // namespace kelvane
