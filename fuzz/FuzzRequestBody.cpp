// What requests carry: JSON and forms. The first byte chooses.
#include <cstdint>
#include <cstdlib>

#include "dashboard/HttpTarget.h"
#include "dashboard/ItemBody.h"
#include "text/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  if (size == 0) return 0;
  const std::string_view body(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] == '4') {
    const auto form = ReadForm(body);
    if (form)
      for (const auto& [name, value] : form.Value())
        if (!IsValidUtf8(name) || !IsValidUtf8(value)) std::abort();
    return 0;
  }
  const auto message = data[0] == '0'   ? ItemMessageOf(body, ManualSlot::kCurrent)
                       : data[0] == '1' ? PromoteMessageOf(body)
                       : data[0] == '2' ? PresenterMessageOf(body)
                                        : ShowMessageOf(body);
  // One line, whatever the values hold: a line end would begin another message.
  if (message && message.Value().find_first_of("\r\n") != std::string::npos) std::abort();
  if (!message && message.Reason().empty()) std::abort();
  return 0;
}
