#pragma once

#include <string>
#include <utility>
#include <variant>

namespace tallyforge {

/// Why something could not be done, as one line without a full stop ("no such file").
struct Error {
    std::string reason;
    int number = 0; ///< the errno behind it, where it is known; otherwise 0

    /// The same with what was being done before the reason: "syncing the folder: permission denied".
    Error during(const std::string& step) const { return {step + ": " + reason, number}; }
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
    /// The errno behind the reason, where it is known; 0 otherwise, and when there is a value.
    int number() const {
        const Error* error = std::get_if<Error>(&state_);
        return error ? error->number : 0;
    }
    Error error() const { return std::get<Error>(state_); }

  private:
    std::variant<T, Error> state_;
};

struct Done {};
/// The outcome of an act that gives nothing back.
using Status = Result<Done>;

} // namespace tallyforge
