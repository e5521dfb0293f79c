// A program with the three kinds of encoders that are driven by automation, for tests: it writes down every
// call, and hangs, fails or dies when told to.
//
//   EncoderServer --register     makes it known to this user or, where the system wants that, to all
//   EncoderServer --unregister   and forgets it
//   EncoderServer -Embedding     serves until the event "zeb-encoder-server-end", ten minutes at most (the
//                                system starts it so)
//
// Beside the program lie EncoderServer.calls (one line each: "SendScript TEXT Song"), EncoderServer.pid, and
// EncoderServer.orders, read at every call. Its lines: "hang MEMBER" (for as long as the line is there, a
// minute at most), "fail MEMBER WORDS", "die MEMBER", "list array" or "list counted" (in place of a
// collection that can be walked), "running 0", "state 3".
#include <windows.h>
// After windows.h.
#include <objbase.h>
#include <oleauto.h>

#include <atomic>
#include <fstream>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Kind {
  const wchar_t* progId;
  const wchar_t* classId;
};
constexpr Kind kKinds[] = {
    {L"RealProducerControl.ProducerControl", L"{6B0E6F51-4C58-4E0B-9B57-2D7A5E1C0A01}"},
    {L"Asf.RealTimeEncoder", L"{6B0E6F51-4C58-4E0B-9B57-2D7A5E1C0A02}"},
    {L"WMEncAgt.WMEncoderAgent", L"{6B0E6F51-4C58-4E0B-9B57-2D7A5E1C0A03}"},
};
const std::vector<std::wstring> kNames = {L"Other", L"STATION \u00C9"};

std::vector<DWORD> gRegistered;

// First of all at an end, however sudden: some systems go on sending callers to a program that has died.
void Revoke() {
  for (const DWORD number : gRegistered) CoRevokeClassObject(number);
}

// ---- The files

std::wstring ProgramPath() {
  wchar_t path[MAX_PATH * 4]{};
  GetModuleFileNameW(nullptr, path, MAX_PATH * 4);
  return path;
}

std::string FileBeside(const char* ending) {
  char path[MAX_PATH * 4]{};
  GetModuleFileNameA(nullptr, path, MAX_PATH * 4);
  const std::string whole(path);
  return whole.substr(0, whole.find_last_of('.')) + ending;
}

std::string Utf8(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
  bytes.pop_back();
  return bytes;
}

void WriteDown(const std::string& line) {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  std::ofstream(FileBeside(".calls"), std::ios::app | std::ios::binary) << line << "\n";
}

// What stands behind `order` in its line; nothing without such a line.
std::optional<std::string> Order(const std::string& order) {
  std::ifstream file(FileBeside(".orders"));
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line == order) return "";
    if (line.compare(0, order.size() + 1, order + " ") == 0) return line.substr(order.size() + 1);
  }
  return std::nullopt;
}

// ---- The objects

// What is asked for by name: its members' numbers are places in a list.
class Object : public IDispatch {
 public:
  explicit Object(std::vector<std::wstring> members) : members_(std::move(members)) {}
  virtual ~Object() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** given) override {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IDispatch);
    *given = known ? this : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++count_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --count_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
    for (std::size_t i = 0; i < members_.size(); ++i) {
      if (_wcsicmp(members_[i].c_str(), names[0]) != 0) continue;
      ids[0] = static_cast<DISPID>(i) + 1;
      return S_OK;
    }
    ids[0] = DISPID_UNKNOWN;
    return DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT* result,
                                   EXCEPINFO* told, UINT*) override {
    if (id == DISPID_NEWENUM) return Walk(result);
    if (id < 1 || static_cast<std::size_t>(id) > members_.size()) return DISP_E_MEMBERNOTFOUND;
    const std::wstring& member = members_[static_cast<std::size_t>(id) - 1];
    const std::string name = Utf8(member.c_str());
    std::vector<VARIANT> arguments(given->rgvarg, given->rgvarg + given->cArgs);
    std::string line = name;
    for (std::size_t i = arguments.size(); i-- > 0;) {
      VARIANT text;
      VariantInit(&text);
      if (FAILED(VariantChangeType(&text, &arguments[i], 0, VT_BSTR))) return DISP_E_TYPEMISMATCH;
      line += " " + Utf8(text.bstrVal ? text.bstrVal : L"");
      VariantClear(&text);
    }
    WriteDown(line);
    if (Order("die " + name)) {
      Revoke();
      TerminateProcess(GetCurrentProcess(), 1);
    }
    for (int left = 6000; left > 0 && Order("hang " + name); --left) Sleep(10);
    if (const auto words = Order("fail " + name)) return Fail(*words, told);
    return Answer(member, arguments, result);
  }

 protected:
  virtual HRESULT Answer(const std::wstring& member, std::vector<VARIANT>& arguments, VARIANT* result) = 0;
  virtual HRESULT Walk(VARIANT*) { return DISP_E_MEMBERNOTFOUND; }
  static HRESULT Give(VARIANT* result, IDispatch* object) {
    result->vt = VT_DISPATCH;
    result->pdispVal = object;
    return S_OK;
  }
  static void GiveText(VARIANT* result, const std::wstring& text) {
    result->vt = VT_BSTR;
    result->bstrVal = SysAllocString(text.c_str());
  }

 private:
  static HRESULT Fail(const std::string& words, EXCEPINFO* told) {
    if (words.empty()) return E_ACCESSDENIED;
    *told = {};
    told->bstrSource = SysAllocString(L"EncoderServer");
    told->bstrDescription = SysAllocString(std::wstring(words.begin(), words.end()).c_str());
    told->scode = E_FAIL;
    return DISP_E_EXCEPTION;
  }

  const std::vector<std::wstring> members_;
  std::atomic<ULONG> count_{1};
};

class Encoder : public Object {
 public:
  Encoder()
      : Object({L"isEncoding", L"Started", L"RunState", L"LoadASD", L"SendScript", L"SendRealMediaEvent"}) {}

 protected:
  HRESULT Answer(const std::wstring& member, std::vector<VARIANT>&, VARIANT* result) override {
    if (!result) return S_OK;
    if (member == L"RunState") {
      result->vt = VT_I2;  // as some encoders give it
      result->iVal = static_cast<SHORT>(std::stoi(Order("state").value_or("2")));
    } else {
      result->vt = VT_BOOL;
      result->boolVal = Order("running").value_or("1") == "1" ? VARIANT_TRUE : VARIANT_FALSE;
    }
    return S_OK;
  }
};

class Walker : public IEnumVARIANT {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** given) override {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IEnumVARIANT);
    *given = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++count_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --count_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* given, ULONG* fetched) override {
    ULONG done = 0;
    for (; done < wanted && at_ < kNames.size(); ++done, ++at_) {
      given[done].vt = VT_BSTR;
      given[done].bstrVal = SysAllocString(kNames[at_].c_str());
    }
    if (fetched) *fetched = done;
    return done == wanted ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reset() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT**) override { return E_NOTIMPL; }
  virtual ~Walker() = default;

 private:
  std::size_t at_ = 0;
  std::atomic<ULONG> count_{1};
};

class Names : public Object {
 public:
  Names() : Object({L"Count", L"Item"}) {}

 protected:
  // From 1.
  HRESULT Answer(const std::wstring& member, std::vector<VARIANT>& arguments, VARIANT* result) override {
    if (member == L"Count") {
      result->vt = VT_I4;
      result->lVal = static_cast<LONG>(kNames.size());
      return S_OK;
    }
    const LONG index = arguments.size() == 1 && arguments[0].vt == VT_I4 ? arguments[0].lVal : 0;
    if (index < 1 || static_cast<std::size_t>(index) > kNames.size()) return DISP_E_BADINDEX;
    GiveText(result, kNames[static_cast<std::size_t>(index) - 1]);
    return S_OK;
  }
  HRESULT Walk(VARIANT* result) override {
    if (Order("list")) return DISP_E_MEMBERNOTFOUND;
    result->vt = VT_UNKNOWN;
    result->punkVal = new Walker;
    return S_OK;
  }
};

class Agent : public Object {
 public:
  Agent() : Object({L"EncoderNames", L"Encoder"}) {}

 protected:
  HRESULT Answer(const std::wstring& member, std::vector<VARIANT>& arguments, VARIANT* result) override {
    if (member == L"EncoderNames")
      return Order("list").value_or("") == "array" ? GiveArray(result) : Give(result, new Names);
    const bool known =
        arguments.size() == 1 && arguments[0].vt == VT_BSTR && kNames[1] == arguments[0].bstrVal;
    return known ? Give(result, new Encoder) : DISP_E_BADINDEX;
  }

 private:
  static HRESULT GiveArray(VARIANT* result) {
    result->vt = VT_ARRAY | VT_VARIANT;
    result->parray = SafeArrayCreateVector(VT_VARIANT, 1, static_cast<ULONG>(kNames.size()));
    for (LONG i = 0; i < static_cast<LONG>(kNames.size()); ++i) {
      VARIANT text;
      GiveText(&text, kNames[static_cast<std::size_t>(i)]);
      LONG at = i + 1;
      SafeArrayPutElement(result->parray, &at, &text);
      VariantClear(&text);
    }
    return S_OK;
  }
};

class Factory : public IClassFactory {
 public:
  explicit Factory(bool agents) : agents_(agents) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** given) override {
    const bool known = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, IID_IClassFactory);
    *given = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }  // it lives as long as the program
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** given) override {
    if (outer) return CLASS_E_NOAGGREGATION;
    Object* const made = agents_ ? static_cast<Object*>(new Agent) : new Encoder;
    const HRESULT result = made->QueryInterface(id, given);
    made->Release();
    return result;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
  virtual ~Factory() = default;

 private:
  const bool agents_;
};

// ---- The program

// Some systems look for a user's own classes, others only for those of all users.
const HKEY kRoots[] = {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE};
const std::wstring kClasses = L"Software\\Classes\\";

bool SetDefault(HKEY root, const std::wstring& key, const std::wstring& text) {
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  return RegSetKeyValueW(root, (kClasses + key).c_str(), nullptr, REG_SZ, text.c_str(), size) ==
         ERROR_SUCCESS;
}

bool IsKnown(const Kind& kind) {
  CLSID id;
  return SUCCEEDED(CLSIDFromProgID(kind.progId, &id));
}

bool Register(const Kind& kind) {
  const std::wstring id(kind.classId);
  for (const HKEY root : kRoots) {
    const bool written =
        SetDefault(root, std::wstring(kind.progId) + L"\\CLSID", id) &&
        SetDefault(root, L"CLSID\\" + id + L"\\LocalServer32", L"\"" + ProgramPath() + L"\"");
    if (written && IsKnown(kind)) return true;
  }
  return false;
}

bool RegisterAll() {
  if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return false;
  bool all = true;
  for (const Kind& kind : kKinds) all = Register(kind) && all;
  return all;
}

void UnregisterAll() {
  for (const HKEY root : kRoots) {
    for (const Kind& kind : kKinds) {
      RegDeleteTreeW(root, (kClasses + kind.progId).c_str());
      RegDeleteTreeW(root, (kClasses + L"CLSID\\" + kind.classId).c_str());
    }
  }
}

int Serve() {
  const HANDLE end = CreateEventW(nullptr, FALSE, FALSE, L"zeb-encoder-server-end");
  std::ofstream(FileBeside(".pid")) << GetCurrentProcessId();
  if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return 1;
  for (const Kind& kind : kKinds) {
    CLSID id;
    DWORD number = 0;
    const bool agents = kind.progId[0] == L'W';
    if (FAILED(CLSIDFromString(kind.classId, &id)) ||
        FAILED(
            CoRegisterClassObject(id, new Factory(agents), CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &number)))
      return 1;
    gRegistered.push_back(number);
  }
  WaitForSingleObject(end, 10 * 60'000);
  Revoke();
  TerminateProcess(GetCurrentProcess(), 0);  // whoever holds an encoder finds it gone
  return 0;
}

}  // namespace

int main(int count, char** words) {
  const std::string what = count > 1 ? words[1] : "-Embedding";
  if (what == "--register") return RegisterAll() ? 0 : 1;
  if (what == "--unregister") {
    UnregisterAll();
    return 0;
  }
  return Serve();
}
