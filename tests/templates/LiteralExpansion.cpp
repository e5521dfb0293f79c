#include "tests/templates/LiteralExpansion.h"

#include <algorithm>
#include <map>

#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Paths.h"
#include "text/PercentEncoding.h"
#include "text/Utf8.h"

namespace zeb::literal {

namespace {

using Text = std::u32string;

Text Wide(std::string_view text) {
  Text wide;
  for (std::size_t at = 0; at < text.size();) wide += NextCharacter(text, at);
  return wide;
}

std::string Narrow(const Text& text) {
  std::string narrow;
  for (char32_t c : text) AppendCharacter(narrow, c);
  return narrow;
}

std::size_t Find(const Text& text, const Text& what, std::size_t start) {
  const std::size_t at = start > text.size() ? Text::npos : text.find(what, start - 1);
  return at == Text::npos ? 0 : at + 1;
}
Text Mid(const Text& text, std::size_t start, std::size_t count = Text::npos) {
  return start > text.size() ? Text() : text.substr(start - 1, count);
}
Text Extract(const Text& text, std::size_t start, char32_t delimiter, std::size_t& end) {
  end = Find(text, Text(1, delimiter), start);
  return end == 0 ? Mid(text, start) : Mid(text, start, end - start);
}
Text Upper(const Text& text) {
  return Wide(UpperCase(Narrow(text)));
}

struct Tag {
  Text slot, element, rest;
  std::int32_t index = 0;
};

Tag Split(const Text& t) {
  Tag tag;
  if (Mid(t, 5, 3) == U"SIM") {
    tag.slot = Mid(t, 5);
    tag.element = U"SIMPLETEXT";
    return tag;
  }
  std::size_t u = 0;
  tag.slot = Extract(t, 5, U'_', u);
  tag.rest = Mid(t, u + 1);
  tag.element = Extract(t, u + 1, U'_', u);
  if (u > 0) tag.index = LeadingInteger(Narrow(Extract(t, u + 1, U'_', u)));
  return tag;
}

const clsZEBItemInfo* Resolve(const clsZEBService& service, const Text& slot) {
  const Text word = slot.substr(0, 3);
  const int number = std::max(1, LeadingDigits(Narrow(Mid(slot, 5))));
  if (word == U"NOW") return &service.CurrentItem();
  if (word == U"COM") return &service.ComingSoonItem();
  if (word == U"NEX") return service.NextItem(number);
  if (word == U"PRE") return service.PreviousItem(number);
  return nullptr;
}

std::int32_t TypeOf(const std::string& word) {
  static const std::map<std::string, std::int32_t> kTypes = {
      {"SONG", 7},    {"TRACK", 7},     {"PELMORA", 7},     {"ADVERT", 4},  {"AD", 4},
      {"SPOTSET", 4}, {"JINGLE", 3},    {"RCART", 3},       {"ID", 3},      {"CART", 2},
      {"VOICE", 3},   {"VOICELINK", 3}, {"VOICECUSTOM", 3}, {"VCUSTOM", 3}, {"LINK", 3}};
  const auto found = kTypes.find(word);
  return found == kTypes.end() ? 0 : found->second;
}

Text Section(const Text& b, const clsZEBService& service) {
  if (b.substr(0, 5) != U"(<ZEB") return b;
  std::size_t q = 0, r = 0;
  const Text t = Extract(b, 3, U'>', q);
  if (t.empty()) return b;
  const Tag tag = Split(t);
  bool sense = false;
  if (Mid(b, q + 1, 1) == U"=") {
    sense = true;
    q += 1;
  } else if (Mid(b, q + 1, 2) == U"!=") {
    q += 2;
  }
  const std::string o = Narrow(Upper(Extract(b, q + 1, U')', r)));
  const std::string element = Narrow(Upper(tag.element));
  bool flag = false;
  if (const clsZEBItemInfo* item = Resolve(service, tag.slot)) {
    if (element == "ITEMTYPE")
      flag = ((*item)->ItemType == TypeOf(o)) == sense;
    else
      flag = (o == item->GetElementByName(element, true)) == sense;
  } else if (tag.slot != U"SPECIAL") {
    return b;
  } else if (element == "PRESENTERFULLNAME") {
    flag = (LowerCase(service.PresenterFullName) == o) == sense;
  } else if (element == "PRESENTERREFERENCE") {
    flag = (LowerCase(service.PresenterReference) == o) == sense;
  } else if (element == "SHOWREFERENCE") {
    flag = (LowerCase(service.ShowReference) == o) == sense;
  } else if (element == "SHOWTITLE") {
    flag = (LowerCase(service.ShowTitle) == o) == sense;
  }
  return flag ? Mid(b, r + 1) : Text();
}

Text Value(const Text& t, const clsZEBService& service, std::string_view simpleText, UploadFileList& files,
           ValueEncoding values) {
  const Tag tag = Split(t);
  const auto finish = [&](const std::string& value) {
    const std::string trimmed(TrimBlanks(value));
    return Wide(values.urlEncode ? UrlEncode(EncodeFor(trimmed, values.characterSet)) : trimmed);
  };
  if (const clsZEBItemInfo* item = Resolve(service, tag.slot)) {
    for (int i = 1; i <= item->NumberAdditionalFiles(); ++i) files.Add(item->AdditionalFile(i));
    if (tag.element != U"PICTUREFILENAME") return finish(item->GetElementByName(Narrow(tag.element), true));
    const std::string picture = tag.index < 0 ? "" : item->PictureFileName(tag.index == 0 ? 1 : tag.index);
    if (picture.empty()) return Wide(service.settings.NoPictureFileName);
    files.Add(picture);
    return Wide(FileNamePart(picture));
  }
  if (tag.slot == U"SIMPLETEXT") return Wide(Expand(simpleText, service, "", files, values));
  if (tag.slot == U"SPECIAL") return finish(service.GetSpecialElementByName(Narrow(tag.rest)));
  return t;
}

// The constructs that a cut must not split, as [start, end) from `from` on.
std::vector<std::pair<std::size_t, std::size_t>> Constructs(const Text& page, std::size_t from) {
  std::vector<std::pair<std::size_t, std::size_t>> found;
  const auto look = [&](const Text& opener, char32_t closer) {
    for (std::size_t at = from; at < page.size(); ++at) {
      if (page.compare(at, opener.size(), opener) != 0) continue;
      std::size_t run = 0;  // brackets directly before; an odd number protects this one
      while (at - run > from && page[at - run - 1] == opener[0]) ++run;
      if (run % 2 != 0) continue;
      const std::size_t end = page.find(closer, at);
      found.emplace_back(at, end == Text::npos ? page.size() : end + 1);
    }
    for (std::size_t at = from; at + 1 < page.size(); ++at)
      if (page[at] == opener[0] && page[at + 1] == opener[0]) {
        found.emplace_back(at, at + 2);
        ++at;
      }
  };
  look(U"[(<ZEB", U']');
  look(U"<ZEB", U'>');
  return found;
}

}  // namespace

std::string Expand(std::string_view text, const clsZEBService& service, std::string_view simpleText,
                   UploadFileList& uploadFiles, ValueEncoding values) {
  Text w = Wide(text);
  for (std::size_t p = Find(w, U"[", 1); p != 0 && p != w.size();) {
    if (Mid(w, p + 1, 1) == U"[") {
      p = Find(w, U"[", p + 2);
      continue;
    }
    std::size_t e = 0;
    Text b = Extract(w, p + 1, U']', e);
    if (e == 0) e = w.size();
    b = Section(b, service);
    w = w.substr(0, p - 1) + b + Mid(w, e + 1);
    p = p + b.size() - 1;
    p = Find(w, U"[", p + 1);
  }
  for (std::size_t p = Find(w, U"<", 1); p != 0 && p != w.size();) {
    if (Mid(w, p, 4) != U"<ZEB") {
      p = p + 1;
      p = Find(w, U"<", p + 1);
      continue;
    }
    std::size_t e = 0;
    const Text t = Extract(w, p + 1, U'>', e);
    const bool neverClosed = e == 0;
    if (neverClosed) e = t.size();
    const Text value = Value(t, service, simpleText, uploadFiles, values);
    w = w.substr(0, p - 1) + value + Mid(w, e + 1);
    if (neverClosed) break;
    p = p + value.size() - 1;
    p = Find(w, U"<", p + 1);
  }
  return Narrow(w);
}

std::string ExpandPage(std::string_view page, const clsZEBService& service, std::string_view simpleText,
                       UploadFileList& uploadFiles, std::size_t characters) {
  const Text wide = Wide(page);
  std::string result;
  for (std::size_t from = 0; from < wide.size();) {
    const auto constructs = Constructs(wide, from);
    const auto splits = [&](std::size_t cut) {
      return std::any_of(constructs.begin(), constructs.end(),
                         [cut](const auto& c) { return c.first < cut && cut < c.second; });
    };
    std::size_t cut = std::min(from + characters, wide.size());
    while (cut > from && cut < wide.size() && splits(cut)) --cut;
    if (cut == from)
      for (++cut; splits(cut);) ++cut;
    result += Expand(Narrow(wide.substr(from, cut - from)), service, simpleText, uploadFiles);
    from = cut;
  }
  return result;
}

}  // namespace zeb::literal
