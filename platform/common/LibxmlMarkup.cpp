#include "platform/common/LibxmlMarkup.h"

#include <libxml/HTMLparser.h>
#include <libxml/parser.h>
#include <libxml/xmlreader.h>

#include <memory>
#include <utility>

#include "platform/FileSystem.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr std::size_t kMaxElements = 200000;
// Text decoded from a file may be somewhat longer than the file.
constexpr std::size_t kMaxText = 4 * kMaxFileBytes;

struct ReaderDeleter {
  void operator()(xmlTextReader* reader) const { xmlFreeTextReader(reader); }
};
struct ContextDeleter {
  void operator()(htmlParserCtxt* context) const { htmlFreeParserCtxt(context); }
};
struct DocumentDeleter {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

std::string_view View(const xmlChar* text) {
  return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

// Keeps the first complaint, on one line.
void KeepFirst(void* reason, xmlErrorPtr error) {
  std::string& kept = *static_cast<std::string*>(reason);
  if (!kept.empty() || !error || error->level < XML_ERR_ERROR) return;
  kept = "line " + std::to_string(error->line) + ": " + (error->message ? error->message : "wrong XML");
  while (!kept.empty() && kept.back() == '\n') kept.pop_back();
  for (char& c : kept)
    if (static_cast<unsigned char>(c) < 0x20) c = ' ';
  if (kept.size() > 200) kept.resize(200);
}

std::string EntityName(xmlTextReader* reader) {
  constexpr std::size_t kMaxNameCharacters = 64;
  const std::string_view name = View(xmlTextReaderConstName(reader));
  return std::string(FirstCharacters(name, kMaxNameCharacters));
}

// Puts the elements of the document together as the reader passes over it.
class Collector {
 public:
  // "" or why the document is refused.
  std::string Take(xmlTextReader* reader) {
    switch (xmlTextReaderNodeType(reader)) {
      case XML_READER_TYPE_ELEMENT:
        if (document_.elements.size() >= kMaxElements) return "it has too many elements";
        document_.elements.push_back({std::string(View(xmlTextReaderConstLocalName(reader))),
                                      open_.empty() ? MarkupDocument::kNone : open_.back(),
                                      document_.text.size(), document_.text.size()});
        if (xmlTextReaderIsEmptyElement(reader) == 0) open_.push_back(document_.elements.size() - 1);
        break;
      // Its text would be missing. What it stands for is not looked at: it may be a file, or grow without
      // end.
      case XML_READER_TYPE_ENTITY_REFERENCE:
        return "it uses the entity '" + EntityName(reader) +
               "'; of entities only &amp; &lt; &gt; &quot; &apos; and "
               "numbers are read, so the text itself must stand in its place";
      case XML_READER_TYPE_END_ELEMENT:
        if (open_.empty()) break;
        document_.elements[open_.back()].textEnd = document_.text.size();
        open_.pop_back();
        break;
      case XML_READER_TYPE_TEXT:
      case XML_READER_TYPE_CDATA:
      case XML_READER_TYPE_WHITESPACE:
      case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
        document_.text += View(xmlTextReaderConstValue(reader));
        break;
      default:
        break;
    }
    return {};
  }
  MarkupDocument Document() { return std::move(document_); }

 private:
  MarkupDocument document_;
  std::vector<std::size_t> open_;
};

// Whether an element's two ends separate words, as those of a paragraph or a table cell do.
bool IsBlock(const xmlNode* node) {
  if (node->type != XML_ELEMENT_NODE) return false;
  const htmlElemDesc* known = htmlTagLookup(node->name);
  return known && known->isinline == 0;
}

bool IsHidden(const xmlNode* node) {
  return node->type == XML_COMMENT_NODE || View(node->name) == "script" || View(node->name) == "style";
}

class TextOfPage {
 public:
  // The node and all that follows it, with what is in them.
  std::string Take(const xmlNode* node) {
    while (node) {
      const bool goIn = !IsHidden(node);
      if (goIn) Enter(node);
      if (goIn && node->type == XML_ELEMENT_NODE && node->children) {
        node = node->children;
        continue;
      }
      if (goIn) Leave(node);
      while (node && !node->next) {
        node = node->parent;
        if (node) Leave(node);
      }
      if (node) node = node->next;
    }
    return std::move(text_);
  }

 private:
  void Enter(const xmlNode* node) {
    if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE)
      AddText(View(node->content));
    else if (View(node->name) == "br")
      AddBreak();
    else if (IsBlock(node))
      blank_ = true;
  }
  void Leave(const xmlNode* node) {
    if (IsBlock(node)) blank_ = true;
  }
  void AddText(std::string_view text) {
    for (const char c : text) {
      if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
        blank_ = true;
        continue;
      }
      if (blank_ && !text_.empty() && text_.back() != '\n') text_ += ' ';
      blank_ = false;
      text_ += c;
    }
  }
  void AddBreak() {
    text_ += '\n';
    blank_ = false;
  }
  std::string text_;
  bool blank_ = false;
};

}  // namespace

LibxmlMarkup::LibxmlMarkup() {
  xmlInitParser();
}

Result<MarkupDocument> LibxmlMarkup::ReadXml(std::string_view text) {
  if (text.size() > kMaxText) return Failure{"it is too long"};
  const std::unique_ptr<xmlTextReader, ReaderDeleter> reader(xmlReaderForMemory(
      text.data(), static_cast<int>(text.size()), "", "UTF-8",
      XML_PARSE_IGNORE_ENC | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_COMPACT));
  if (!reader) return Failure{"the XML reader cannot be started"};
  std::string reason;
  xmlTextReaderSetStructuredErrorHandler(reader.get(), KeepFirst, &reason);
  Collector collector;
  int more = 0;
  while ((more = xmlTextReaderRead(reader.get())) == 1)
    if (std::string refused = collector.Take(reader.get()); !refused.empty()) return Failure{refused};
  if (more != 0) return Failure{reason.empty() ? "it is not well-formed XML" : reason};
  MarkupDocument document = collector.Document();
  if (document.elements.empty()) return Failure{"it holds no element"};
  return document;
}

std::string LibxmlMarkup::HtmlToText(std::string_view html) {
  if (html.empty() || html.size() > kMaxText) return {};
  const std::unique_ptr<htmlParserCtxt, ContextDeleter> context(htmlNewParserCtxt());
  if (!context) return {};
  const std::unique_ptr<xmlDoc, DocumentDeleter> document(
      htmlCtxtReadMemory(context.get(), html.data(), static_cast<int>(html.size()), nullptr, "UTF-8",
                         HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET));
  return document ? TextOfPage().Take(document->children) : std::string();
}

}  // namespace zeb
