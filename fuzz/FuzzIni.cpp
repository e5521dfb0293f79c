// Initialisation files from the input. What is written reads back, and the file stays readable.
#include <cstdint>
#include <cstdlib>

#include "text/IniFile.h"
#include "text/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  IniFile file = IniFile::FromBytes({reinterpret_cast<const char*>(data), size});
  if (const auto text = file.Text("ZEBSource", "ItemTitle.Prefix"); text && !IsValidUtf8(*text)) std::abort();
  file.Integer("ZEBSource", "ItemTitle.Start");
  file.Write("ZEBSource", "ItemTitle.Prefix", " x ");
  file.Write("Other", "key", "'q'");
  const IniFile again = IniFile::FromBytes(file.ToBytes());
  if (file.Text("ZEBSource", "itemtitle.prefix") != " x " || file.Text("other", "KEY") != "'q'") std::abort();
  // Characters that are wrong in UTF-16 and bytes that spell another encoding may read back as others do.
  again.Text("other", "key");
  return 0;
}
