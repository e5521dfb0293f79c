#include "text/Encodings.h"

#include <bit>
#include <cstdint>

#include "text/CharacterTables.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Utf8.h"
#include "text/Utf8Sequence.h"

namespace zeb {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LEMark = "\xFF\xFE";
constexpr std::string_view kUtf16BEMark = "\xFE\xFF";
constexpr std::size_t kDeclarationBytes = 4096;

std::string DecodeWindows1252(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  for (const char c : bytes) AppendCharacter(text, FromWindows1252(static_cast<unsigned char>(c)));
  return text;
}

std::string DecodeUtf16(std::string_view bytes, std::endian order) {
  const auto unit = [&](std::size_t at) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<char32_t>(order == std::endian::big ? first * 256u + second : second * 256u + first);
  };
  std::string text;
  text.reserve(bytes.size());
  std::size_t at = 0;
  while (bytes.size() - at >= 2) {
    char32_t c = unit(at);
    at += 2;
    if (c >= 0xD800 && c < 0xDC00 && bytes.size() - at >= 2) {
      const char32_t low = unit(at);
      if (low >= 0xDC00 && low < 0xE000) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        at += 2;
      }
    }
    AppendCharacter(text, c);  // a surrogate without its other half becomes the replacement character
  }
  if (at < bytes.size()) AppendCharacter(text, kReplacementCharacter);
  return text;
}

std::string EncodeUtf16(std::string_view text, std::endian order) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  const auto append = [&](char32_t unit) {
    const char high = static_cast<char>(static_cast<unsigned char>(unit >> 8));
    const char low = static_cast<char>(static_cast<unsigned char>(unit & 0xFF));
    bytes += order == std::endian::big ? high : low;
    bytes += order == std::endian::big ? low : high;
  };
  std::size_t at = 0;
  while (at < text.size()) {
    const char32_t c = NextCharacter(text, at);
    if (c < 0x10000) {
      append(c);
    } else {
      append(0xD800 + ((c - 0x10000) >> 10));
      append(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return bytes;
}

std::string EncodeSingleByte(std::string_view text, CharacterSet set, bool markup) {
  std::string bytes;
  bytes.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    const char32_t c = NextCharacter(text, at);
    if (const auto byte = ByteFor(c, set)) {
      bytes += static_cast<char>(*byte);
    } else if (markup && c >= 0xA0) {
      bytes += "&#";
      AppendPlainNumber(bytes, static_cast<std::int64_t>(c));
      bytes += ';';
    } else {
      bytes += '?';  // in markup too for a control character: &#128; would be read as another one
    }
  }
  return bytes;
}

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
}

std::size_t SkipSpace(std::string_view text, std::size_t at) {
  while (at < text.size() && IsSpace(text[at])) ++at;
  return at;
}

// The value of `name = value` inside one tag, or "".
std::string_view DeclaredValue(std::string_view tag, std::string_view name) {
  for (std::size_t at = 0; (at = FindIgnoringAsciiCase(tag, name, at)) != std::string_view::npos;) {
    at = SkipSpace(tag, at + name.size());
    if (at >= tag.size() || tag[at] != '=') continue;
    at = SkipSpace(tag, at + 1);
    if (at < tag.size() && (tag[at] == '"' || tag[at] == '\'')) at = SkipSpace(tag, at + 1);
    std::size_t end = at;
    while (end < tag.size() && !IsSpace(tag[end]) && tag[end] != '"' && tag[end] != '\'' && tag[end] != ';' &&
           tag[end] != '/' && tag[end] != '?')
      ++end;
    return tag.substr(at, end - at);
  }
  return {};
}

bool KindByCharset(std::string_view name, FileEncoding::Kind& kind) {
  struct Name {
    std::string_view name;
    FileEncoding::Kind kind;
  };
  static constexpr Name kNames[] = {
      {"utf-8", FileEncoding::kUtf8},
      {"utf8", FileEncoding::kUtf8},
      {"windows-1252", FileEncoding::kWindows1252},
      {"cp1252", FileEncoding::kWindows1252},
      {"x-cp1252", FileEncoding::kWindows1252},
      {"iso-8859-1", FileEncoding::kIso8859_1},
      {"iso8859-1", FileEncoding::kIso8859_1},
      {"iso_8859-1", FileEncoding::kIso8859_1},
      {"latin1", FileEncoding::kIso8859_1},
      {"latin-1", FileEncoding::kIso8859_1},
  };
  for (const Name& known : kNames) {
    if (!EqualIgnoringAsciiCase(name, known.name)) continue;
    kind = known.kind;
    return true;
  }
  return false;
}

// Looks for an XML declaration, then for the first <meta> that names a charset.
bool FindDeclaredKind(std::string_view head, FileEncoding::Kind& kind) {
  const std::string_view start = head.substr(SkipSpace(head, 0));
  if (StartsWithIgnoringCase(start, "<?xml")) {
    const std::string_view declaration = start.substr(0, start.find('>'));
    if (KindByCharset(DeclaredValue(declaration, "encoding"), kind)) return true;
  }
  for (std::size_t at = 0; (at = FindIgnoringAsciiCase(head, "<meta", at)) != std::string_view::npos;) {
    at += 5;
    const std::string_view tag = head.substr(at, head.find('>', at) - at);
    const std::string_view charset = DeclaredValue(tag, "charset");
    if (!charset.empty()) return KindByCharset(charset, kind);
  }
  return false;
}

// Whether there is a tag that is not one of ours.
bool LooksLikeMarkup(std::string_view head) {
  for (std::size_t at = 0; (at = head.find('<', at)) != std::string_view::npos;) {
    ++at;
    if (at >= head.size()) break;
    const char c = AsciiLower(head[at]);
    const bool opens = (c >= 'a' && c <= 'z') || c == '/' || c == '!' || c == '?';
    const std::string_view rest = head.substr(at);
    if (!opens || rest.substr(0, 4) == "ZEB_" || rest.substr(0, 5) == "/ZEB_") continue;
    return rest.find('>') != std::string_view::npos;
  }
  return false;
}

}  // namespace

std::string DecodeLenient(std::string_view bytes) {
  if (IsValidUtf8(bytes)) return std::string(bytes);
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::size_t length = Utf8SequenceLength(bytes, at);
    if (length > 0) {
      text.append(bytes, at, length);
      at += length;
    } else {
      AppendCharacter(text, FromWindows1252(static_cast<unsigned char>(bytes[at++])));
    }
  }
  return text;
}

FileEncoding DetectFileEncoding(std::string_view bytes) {
  FileEncoding encoding;
  encoding.byteOrderMark = true;
  if (bytes.substr(0, 2) == kUtf16LEMark || bytes.substr(0, 2) == kUtf16BEMark) {
    encoding.kind = bytes[0] == kUtf16LEMark[0] ? FileEncoding::kUtf16LE : FileEncoding::kUtf16BE;
    std::string head = DecodeFile(bytes.substr(0, 2 * kDeclarationBytes), encoding);
    encoding.markup = LooksLikeMarkup(head);
    return encoding;
  }
  const std::string_view head = bytes.substr(0, kDeclarationBytes);
  encoding.markup = LooksLikeMarkup(head);
  if (bytes.substr(0, kUtf8Mark.size()) == kUtf8Mark) return encoding;
  encoding.byteOrderMark = false;
  if (!FindDeclaredKind(head, encoding.kind))
    encoding.kind = IsValidUtf8(bytes) ? FileEncoding::kUtf8 : FileEncoding::kWindows1252;
  return encoding;
}

std::string DecodeFile(std::string_view bytes, const FileEncoding& encoding) {
  const auto without = [bytes](std::string_view mark) {
    return bytes.substr(0, mark.size()) == mark ? bytes.substr(mark.size()) : bytes;
  };
  switch (encoding.kind) {
    case FileEncoding::kUtf8:
      return DecodeLenient(without(kUtf8Mark));
    case FileEncoding::kUtf16LE:
      return DecodeUtf16(without(kUtf16LEMark), std::endian::little);
    case FileEncoding::kUtf16BE:
      return DecodeUtf16(without(kUtf16BEMark), std::endian::big);
    case FileEncoding::kWindows1252:
    case FileEncoding::kIso8859_1:  // its control bytes 80 to 9F are in practice always Windows-1252
      break;
  }
  return DecodeWindows1252(bytes);
}

std::string EncodeFile(std::string_view text, const FileEncoding& encoding) {
  std::string bytes;
  switch (encoding.kind) {
    case FileEncoding::kUtf8:
      if (encoding.byteOrderMark) bytes = kUtf8Mark;
      bytes += text;
      break;
    case FileEncoding::kUtf16LE:
      if (encoding.byteOrderMark) bytes = kUtf16LEMark;
      bytes += EncodeUtf16(text, std::endian::little);
      break;
    case FileEncoding::kUtf16BE:
      if (encoding.byteOrderMark) bytes = kUtf16BEMark;
      bytes += EncodeUtf16(text, std::endian::big);
      break;
    case FileEncoding::kWindows1252:
      bytes = EncodeSingleByte(text, CharacterSet::kWindows1252, encoding.markup);
      break;
    case FileEncoding::kIso8859_1:
      bytes = EncodeSingleByte(text, CharacterSet::kIso8859_1, encoding.markup);
      break;
  }
  return bytes;
}

std::string_view EncodeFile(std::string_view text, const FileEncoding& encoding, std::string& room) {
  if (encoding.kind == FileEncoding::kUtf8 && !encoding.byteOrderMark) return text;
  room = EncodeFile(text, encoding);
  return room;
}

}  // namespace zeb
