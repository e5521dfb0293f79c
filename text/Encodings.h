// The borders between bytes and text.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace zeb {

// Valid UTF-8 sequences as such, every other byte as Windows-1252. What arrives from a socket.
std::string DecodeLenient(std::string_view bytes);

// How a text file is or is to be encoded.
struct FileEncoding {
  enum Kind { kUtf8, kUtf16LE, kUtf16BE, kWindows1252, kIso8859_1 };
  Kind kind = kUtf8;
  bool byteOrderMark = false;
  bool markup = false;  // HTML or XML: a character that the encoding lacks is written as &#NNNN;
  bool operator==(const FileEncoding&) const = default;
};

// The file's byte order mark, else the charset that it declares (HTML meta charset or http-equiv, XML
// declaration; looked for in the first 4096 bytes), else UTF-8 when it is valid UTF-8, else Windows-1252. A
// declared charset that is not one of the kinds counts as not declared.
FileEncoding DetectFileEncoding(std::string_view bytes);
// The text of a file in that encoding, without its byte order mark; bytes that are wrong in it are taken
// leniently.
std::string DecodeFile(std::string_view bytes, const FileEncoding& encoding);
// The bytes to write: mark, then text. What the encoding lacks becomes &#NNNN; in markup, else "?".
std::string EncodeFile(std::string_view text, const FileEncoding& encoding);
// The same without a copy where the bytes are the text as it is; else they are in `room`.
std::string_view EncodeFile(std::string_view text, const FileEncoding& encoding, std::string& room);

// The character set of an output's line to the outside ("CharacterSet" k).
enum class CharacterSet { kUtf8, kWindows1252, kIso8859_1, kRds, kEbuLatin };
inline constexpr std::array kCharacterSets = {CharacterSet::kUtf8, CharacterSet::kWindows1252,
                                              CharacterSet::kIso8859_1, CharacterSet::kRds,
                                              CharacterSet::kEbuLatin};
// "UTF-8", "Windows-1252", "ISO-8859-1", "RDS", "EBU Latin", without regard to case; else the default.
CharacterSet CharacterSetByName(std::string_view name, CharacterSet byDefault);
std::string_view CharacterSetName(CharacterSet set);
// What the set lacks becomes its base letter where there is one, else "?". A letter and a mark apart from it
// count as one character; marks and joiners without a place are left out. Else one byte a character (except
// UTF-8, which is the text as it is).
std::string EncodeFor(std::string_view text, CharacterSet set);

}  // namespace zeb
