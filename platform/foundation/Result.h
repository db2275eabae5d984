#pragma once

#include <string>
#include <utility>
#include <variant>

namespace tallyforge {

/// Why something could not be done, as one line without a full stop ("no such file").
struct Error {
    std::string reason;
};

/// A value, or the reason why there is none. Errors travel as values; nothing throws across a module.
template <class T>
class [[nodiscard]] Result {
  public:
    Result(T value) : state_(std::move(value)) {}
    Result(Error error) : state_(std::move(error)) {}

    explicit operator bool() const { return std::holds_alternative<T>(state_); }
    T& operator*() { return std::get<T>(state_); }
    const T& operator*() const { return std::get<T>(state_); }
    T* operator->() { return &std::get<T>(state_); }
    const T* operator->() const { return &std::get<T>(state_); }
    /// The reason; only when there is no value.
    const std::string& reason() const { return std::get<Error>(state_).reason; }
    Error error() const { return std::get<Error>(state_); }

  private:
    std::variant<T, Error> state_;
};

struct Done {};
/// The outcome of an act that gives nothing back.
using Status = Result<Done>;

} // namespace tallyforge
