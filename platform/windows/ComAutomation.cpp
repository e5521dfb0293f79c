#include "platform/windows/ComAutomation.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"
#include "text/LetterCase.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr std::size_t kMostTexts = 1000;  // of a list

std::string FromBstr(BSTR text) {
  return text ? Narrow(std::wstring_view(text, SysStringLen(text))) : std::string();
}

// What Windows says of a result, or else its number as manuals list it.
std::string WordsFor(HRESULT result) {
  if (result == REGDB_E_CLASSNOTREG || result == CO_E_CLASSSTRING) return "it is not installed";
  if (result == DISP_E_UNKNOWNNAME || result == DISP_E_MEMBERNOTFOUND) return "there is no such member";
  const bool ofSystem = HRESULT_FACILITY(result) == FACILITY_WIN32;
  const std::string words =
      SystemErrorText(static_cast<unsigned long>(ofSystem ? HRESULT_CODE(result) : result));
  if (words.compare(0, 6, "error ") != 0) return words;
  std::array<char, 24> number{};
  std::snprintf(number.data(), number.size(), "error 0x%08lX", static_cast<unsigned long>(result));
  return number.data();
}

std::optional<ComValue> Changed(const VARIANT& value, VARTYPE type) {
  ComValue changed;
  VARIANT source = value;  // it is only read
  if (FAILED(VariantChangeType(changed.Address(), &source, 0, type))) return std::nullopt;
  return changed;
}

bool IsThisComputer(const std::string& computer) {
  if (computer.empty() || EqualIgnoringAsciiCase(computer, "localhost") || computer == "127.0.0.1")
    return true;
  for (const COMPUTER_NAME_FORMAT format :
       {ComputerNameNetBIOS, ComputerNameDnsHostname, ComputerNameDnsFullyQualified}) {
    std::array<wchar_t, 256> name{};
    DWORD size = static_cast<DWORD>(name.size());
    if (GetComputerNameExW(format, name.data(), &size) != 0 &&
        EqualIgnoringAsciiCase(computer, Narrow({name.data(), size})))
      return true;
  }
  return false;
}

// Who calls must free what the program has told.
std::string Told(EXCEPINFO& told) {
  if (told.pfnDeferredFillIn) told.pfnDeferredFillIn(&told);
  std::string words = FromBstr(told.bstrDescription);
  if (words.empty() && told.scode != 0) words = WordsFor(told.scode);
  SysFreeString(told.bstrSource);
  SysFreeString(told.bstrDescription);
  SysFreeString(told.bstrHelpFile);
  return OneLine(words);
}

// As automation wants arguments: the last one first.
class Backwards {
 public:
  explicit Backwards(const ComObject::Arguments& arguments) : values_(arguments.size()) {
    auto value = values_.rbegin();
    for (const ComArgument& argument : arguments) Set(*(value++)->Address(), argument);
    for (ComValue& one : values_) raw_.push_back(*one.Address());
  }
  // Whose values stay here.
  DISPPARAMS Parameters() { return {raw_.data(), nullptr, static_cast<UINT>(raw_.size()), 0}; }

 private:
  static void Set(VARIANT& value, const ComArgument& argument) {
    if (const auto* number = std::get_if<std::int32_t>(&argument)) {
      value.vt = VT_I4;
      value.lVal = *number;
    } else {
      const std::wstring text = Wide(std::get<std::string>(argument));
      value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
      value.vt = VT_BSTR;
    }
  }

  std::vector<ComValue> values_;
  std::vector<VARIANT> raw_;
};

}  // namespace

// ---- Values

std::optional<bool> ComValue::Flag() const {
  auto changed = Changed(value_, VT_BOOL);
  if (!changed) return std::nullopt;
  return changed->Address()->boolVal != VARIANT_FALSE;
}

std::optional<std::int32_t> ComValue::Number() const {
  auto changed = Changed(value_, VT_I4);
  if (!changed) return std::nullopt;
  return changed->Address()->lVal;
}

std::optional<std::string> ComValue::Text() const {
  auto changed = Changed(value_, VT_BSTR);
  if (!changed) return std::nullopt;
  return FromBstr(changed->Address()->bstrVal);
}

std::optional<std::vector<std::string>> ComValue::Texts() const {
  if ((value_.vt & VT_ARRAY) == 0) return std::nullopt;
  SAFEARRAY* const array = (value_.vt & VT_BYREF) != 0 ? *value_.pparray : value_.parray;
  const VARTYPE type = value_.vt & VT_TYPEMASK;
  LONG first = 0, last = -1;
  if (!array || SafeArrayGetDim(array) != 1 || (type != VT_BSTR && type != VT_VARIANT) ||
      FAILED(SafeArrayGetLBound(array, 1, &first)) || FAILED(SafeArrayGetUBound(array, 1, &last)))
    return std::nullopt;
  std::vector<std::string> texts;
  for (LONG at = first; at <= last && texts.size() < kMostTexts; ++at) {
    ComValue one;
    VARIANT* const value = one.Address();
    if (type == VT_BSTR) value->vt = VT_BSTR;
    void* const place = type == VT_BSTR ? static_cast<void*>(&value->bstrVal) : value;
    if (FAILED(SafeArrayGetElement(array, &at, place))) return std::nullopt;
    if (auto text = one.Text()) texts.push_back(std::move(*text));
  }
  return texts;
}

// ---- Objects

Result<ComObject> ComObject::CreateByProgId(const std::string& progId, const std::string& computer) {
  const bool here = IsThisComputer(computer);
  const std::string name = here ? progId : progId + " on '" + computer + "'";
  CLSID id;
  if (FAILED(CLSIDFromProgID(Wide(progId).c_str(), &id)))
    return Failure{progId + " is not installed on this computer"};
  std::wstring server = Wide(computer);
  COSERVERINFO where{};
  where.pwszName = server.data();
  MULTI_QI wanted{&IID_IDispatch, nullptr, S_OK};
  const DWORD place = here ? static_cast<DWORD>(CLSCTX_SERVER) : static_cast<DWORD>(CLSCTX_REMOTE_SERVER);
  const HRESULT made = CoCreateInstanceEx(id, nullptr, place, here ? nullptr : &where, 1, &wanted);
  if (FAILED(made)) return Failure{"cannot start " + name + ": " + WordsFor(made)};
  return ComObject(ComPointer<IDispatch>(static_cast<IDispatch*>(wanted.pItf)), name);
}

Failure ComObject::Fails(const std::string& member, const std::string& why) const {
  return {name_ + ": " + member + " failed: " + why};
}

Result<DISPID> ComObject::Find(const std::string& member) const {
  std::wstring name = Wide(member);
  LPOLESTR names = name.data();
  DISPID id = DISPID_UNKNOWN;
  const HRESULT found = object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
  if (FAILED(found)) return Fails(member, WordsFor(found));
  return id;
}

HRESULT ComObject::Invoke(DISPID id, WORD how, const Arguments& arguments, ComValue* returned,
                          std::string& words) const {
  Backwards values(arguments);
  DISPPARAMS parameters = values.Parameters();
  EXCEPINFO told{};
  UINT wrong = 0;
  const HRESULT result = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, how, &parameters,
                                         returned ? returned->Address() : nullptr, &told, &wrong);
  if (result == DISP_E_EXCEPTION) words = Told(told);
  if (FAILED(result) && words.empty()) words = WordsFor(result);
  return result;
}

Outcome ComObject::Invoke(const std::string& member, WORD how, const Arguments& arguments,
                          ComValue* returned) const {
  const Result<DISPID> id = Find(member);
  if (!id) return id.AsFailure();
  std::string words;
  if (FAILED(Invoke(id.Value(), how, arguments, returned, words))) return Fails(member, words);
  return {};
}

Result<ComValue> ComObject::Get(const std::string& member, const Arguments& arguments) const {
  ComValue value;
  const Outcome got = Invoke(member, DISPATCH_PROPERTYGET | DISPATCH_METHOD, arguments, &value);
  if (!got) return got.AsFailure();
  return value;
}

Result<bool> ComObject::Flag(const std::string& member) const {
  const Result<ComValue> value = Get(member);
  if (!value) return value.AsFailure();
  if (const auto flag = value.Value().Flag()) return *flag;
  return Fails(member, "it is neither true nor false");
}

Result<std::int32_t> ComObject::Number(const std::string& member) const {
  const Result<ComValue> value = Get(member);
  if (!value) return value.AsFailure();
  if (const auto number = value.Value().Number()) return *number;
  return Fails(member, "it is no number");
}

Result<ComObject> ComObject::Object(const std::string& member, const Arguments& arguments,
                                    std::string name) const {
  const Result<ComValue> value = Get(member, arguments);
  if (!value) return value.AsFailure();
  auto object = value.Value().Object<IDispatch>(IID_IDispatch);
  if (!object) return Fails(member, "it gave no object");
  return ComObject(std::move(object), std::move(name));
}

Outcome ComObject::Call(const std::string& member, const Arguments& arguments) const {
  return Invoke(member, DISPATCH_METHOD, arguments, nullptr);
}

Result<std::vector<std::string>> ComObject::Texts(const std::string& member) const {
  const Result<ComValue> value = Get(member);
  if (!value) return value.AsFailure();
  if (auto texts = value.Value().Texts()) return std::move(*texts);
  auto list = value.Value().Object<IDispatch>(IID_IDispatch);
  if (!list) return Fails(member, "it is no list");
  const ComObject collection(std::move(list), name_ + ": " + member);
  if (auto texts = collection.Enumerated()) return std::move(*texts);
  return collection.Counted();
}

// By the member that collections have for walking them; nothing when this one has none.
std::optional<std::vector<std::string>> ComObject::Enumerated() const {
  ComValue given;
  std::string words;
  if (FAILED(Invoke(DISPID_NEWENUM, DISPATCH_PROPERTYGET | DISPATCH_METHOD, {}, &given, words)))
    return std::nullopt;
  const auto walk = given.Object<IEnumVARIANT>(IID_IEnumVARIANT);
  if (!walk) return std::nullopt;
  std::vector<std::string> texts;
  while (texts.size() < kMostTexts) {
    ComValue one;
    if (walk->Next(1, one.Address(), nullptr) != S_OK) break;
    if (auto text = one.Text()) texts.push_back(std::move(*text));
  }
  return texts;
}

// Some count from 0, others from 1.
Result<std::vector<std::string>> ComObject::Counted() const {
  const Result<std::int32_t> count = Number("Count");
  if (!count) return count.AsFailure();
  std::vector<std::string> texts;
  if (count.Value() <= 0) return texts;
  const std::int32_t base = Get("Item", {0}) ? 0 : 1;
  const std::int32_t most = std::min(count.Value(), static_cast<std::int32_t>(kMostTexts));
  for (std::int32_t at = base; at < base + most; ++at) {
    const Result<ComValue> one = Get("Item", {at});
    if (!one) return one.AsFailure();
    if (auto text = one.Value().Text()) texts.push_back(std::move(*text));
  }
  return texts;
}

}  // namespace zeb
