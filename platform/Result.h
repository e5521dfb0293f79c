// Result: the value of an operation that can be expected to fail, or a one-line reason why it did.
//
// The reason names the thing and says what is wrong with it ("cannot open '/srv/www/now.html': Permission
// denied"), so that it can be logged or shown as it stands. Exceptions are for faults, not for these.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace zeb {

struct Failure {
  std::string reason;
};

template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::move(value)) {}
  Result(Failure failure) : state_(std::move(failure)) {}

  bool Ok() const { return state_.index() == 0; }
  explicit operator bool() const { return Ok(); }
  T& Value() { return std::get<0>(state_); }
  const T& Value() const { return std::get<0>(state_); }
  const std::string& Reason() const { return std::get<1>(state_).reason; }
  // Of a result that failed: to be returned as the failure of what asked for it.
  const Failure& AsFailure() const { return std::get<1>(state_); }

 private:
  std::variant<T, Failure> state_;
};

// An operation without a value of its own.
class [[nodiscard]] Outcome {
 public:
  Outcome() = default;
  Outcome(Failure failure) : failed_(true), reason_(std::move(failure.reason)) {}
  // How the operation went, without its value.
  template <class T>
  Outcome(const Result<T>& result) : failed_(!result.Ok()) {
    if (failed_) reason_ = result.Reason();
  }

  bool Ok() const { return !failed_; }
  explicit operator bool() const { return Ok(); }
  const std::string& Reason() const { return reason_; }
  // Of an outcome that failed: to be returned as the failure of what asked for it.
  Failure AsFailure() const { return {reason_}; }

 private:
  bool failed_ = false;
  std::string reason_;
};

}  // namespace zeb
