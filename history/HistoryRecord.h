// HistoryRecord: an item, and the words around it, as the bytes in which the history keeps them: every field,
// so that a template gives later what it gave then.
//
// The form is the history's own: fields by number, those that are empty left out, so equal items are equal
// bytes. A field of a later version is passed over.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "core/ServiceSnapshot.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/ValueEscapes.h"

namespace zeb {

inline constexpr std::size_t kMaxHistoryText = 4 * 1024;     // bytes of one field; the rest is cut
inline constexpr std::size_t kMaxHistoryRecord = 64 * 1024;  // of an item; files that do not fit are left out

// "" for an item that holds nothing. The slot's number is not part of it.
std::string WriteItemRecord(const clsZEBItemInfo& item);
// Nothing for bytes that are no record.
std::optional<clsZEBItemInfo> ReadItemRecord(std::string_view bytes);

// Everything of a snapshot but its items and its moment; also how many next and previous slots it has.
std::string WriteWordsRecord(const ServiceSnapshot& snapshot);
bool ReadWordsRecord(std::string_view bytes, ServiceSnapshot& snapshot);

// How values were put into a template, as a number and back.
int EncodingNumber(ValueEscape escape, bool urlEncode);
ValueEncoding EncodingOf(int number);

// At most so many bytes, cut between two characters; what is no UTF-8 is decoded first.
std::string HistoryText(std::string_view text, std::size_t most);

}  // namespace zeb
