// ComAutomation: objects of other programs, by the names of their members only (late binding).
//
// Private to platform/windows. What belongs to an apartment stays there: everything here is used, and
// destroyed, on the ComThread that made it. Calls block. Failures are one line that names the object, the
// member and what its program or the system says.
#pragma once

#include <windows.h>
// After windows.h.
#include <oleauto.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/Result.h"

namespace zeb {

// One reference that is counted.
template <class Interface>
class ComPointer {
 public:
  ComPointer() = default;
  explicit ComPointer(Interface* taken) : pointer_(taken) {}
  ComPointer(ComPointer&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  ComPointer& operator=(ComPointer&& other) noexcept {
    std::swap(pointer_, other.pointer_);
    return *this;
  }
  ~ComPointer() {
    if (pointer_) pointer_->Release();
  }
  Interface* operator->() const { return pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }
  // The same object by another interface; null when it has none such.
  template <class Other>
  ComPointer<Other> As(const IID& id) const {
    void* other = nullptr;
    if (pointer_) pointer_->QueryInterface(id, &other);
    return ComPointer<Other>(static_cast<Other*>(other));
  }

 private:
  Interface* pointer_ = nullptr;
};

using ComArgument = std::variant<std::int32_t, std::string>;

// What a member gives.
class ComValue {
 public:
  ComValue() { VariantInit(&value_); }
  ComValue(ComValue&& other) noexcept : ComValue() { std::swap(value_, other.value_); }
  ComValue& operator=(ComValue&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~ComValue() { VariantClear(&value_); }

  VARIANT* Address() { return &value_; }
  // Converted where it can be; nothing where it cannot.
  std::optional<bool> Flag() const;
  std::optional<std::int32_t> Number() const;
  std::optional<std::string> Text() const;
  template <class Interface>
  ComPointer<Interface> Object(const IID& id) const {
    const bool isObject = (value_.vt == VT_DISPATCH || value_.vt == VT_UNKNOWN) && value_.punkVal != nullptr;
    void* object = nullptr;
    if (isObject) value_.punkVal->QueryInterface(id, &object);
    return ComPointer<Interface>(static_cast<Interface*>(object));
  }
  // The texts of an array with one dimension; nothing when it is none.
  std::optional<std::vector<std::string>> Texts() const;

 private:
  VARIANT value_;
};

class ComObject {
 public:
  using Arguments = std::vector<ComArgument>;

  ComObject(ComPointer<IDispatch> object, std::string name)
      : object_(std::move(object)), name_(std::move(name)) {}

  // Starts the program that has it, if need be. `computer` "": this one.
  static Result<ComObject> CreateByProgId(const std::string& progId, const std::string& computer = "");

  // A property, or what a function returns.
  Result<ComValue> Get(const std::string& member, const Arguments& arguments = {}) const;
  Result<bool> Flag(const std::string& member) const;
  Result<std::int32_t> Number(const std::string& member) const;
  // `name`: of the object that is given, for reasons.
  Result<ComObject> Object(const std::string& member, const Arguments& arguments, std::string name) const;
  // The texts of an array or a collection, in order.
  Result<std::vector<std::string>> Texts(const std::string& member) const;
  // A method, whatever it returns.
  Outcome Call(const std::string& member, const Arguments& arguments) const;

  const std::string& Name() const { return name_; }

 private:
  Result<DISPID> Find(const std::string& member) const;
  HRESULT Invoke(DISPID id, WORD how, const Arguments& arguments, ComValue* returned,
                 std::string& words) const;
  Outcome Invoke(const std::string& member, WORD how, const Arguments& arguments, ComValue* returned) const;
  std::optional<std::vector<std::string>> Enumerated() const;
  Result<std::vector<std::string>> Counted() const;
  Failure Fails(const std::string& member, const std::string& why) const;

  ComPointer<IDispatch> object_;
  std::string name_;
};

}  // namespace zeb
