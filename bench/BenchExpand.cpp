// Template expansion: short texts, pages, and what they are measured against: a copy of the page, the literal
// step-by-step expansion that the tests compare with, and ctemplate.
//
// Compiled and Ctemplate rows do the same: the template is compiled, and what goes into it (the snapshot, the
// dictionary) is filled, once outside of the loop; each turn makes one new string with the same bytes. That
// is all that ctemplate does; ours also finds the values in the items' records and lists the files that go
// with them each time.
#include <benchmark/benchmark.h>
#include <ctemplate/template.h>

#include <cstring>

#include "core/OutputTypes.h"
#include "templates/CompiledTemplate.h"
#include "templates/PageTemplate.h"
#include "tests/templates/LiteralExpansion.h"
#include "tests/templates/StationFixture.h"

namespace zeb {
namespace {

// HTML as editors write it, with a tag every 500 bytes.
std::string OrdinaryPage(std::size_t bytes) {
  std::string page = "<html>\r\n<body>\r\n";
  for (int i = 0; page.size() < bytes; ++i) {
    page += "<div class=\"row\"><a href=\"/archive/" + std::to_string(i) +
            "\"><b>Ordinary</b> text</a></div>\r\n";
    if (i % 7 == 6) page += "<p><ZEB_NOW_ARTISTS></p>\r\n";
  }
  return page;
}

// A tag or a section every hundred bytes.
std::string DensePage(std::size_t bytes) {
  std::string page = "<html>\r\n";
  while (page.size() < bytes)
    page +=
        "<tr><td>Now on air, every day:</td><td><ZEB_NOW_ITEMNAME></td></tr>\r\n<p>Some text between "
        "them</p>\r\n"
        "[(<ZEB_NOW_ARTISTS>!=)<li>by <ZEB_NOW_ARTISTS></li>]<p>And a paragraph of ordinary text "
        "here.</p>\r\n";
  return page;
}

void Report(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void Expand(benchmark::State& state, const std::string& text) {
  Station station;
  for (auto _ : state) benchmark::DoNotOptimize(station.Expand(text));
  Report(state, text.size());
}

void ExpandAsPage(benchmark::State& state, const std::string& text) {
  Station station;
  for (auto _ : state)
    benchmark::DoNotOptimize(ExpandPage(text, *station.service.TakeSnapshot(), "", station.uploads));
  Report(state, text.size());
}

void Compiled(benchmark::State& state, const std::string& text, bool asPage) {
  Station station;
  const SnapshotPtr snapshot = station.service.TakeSnapshot();
  const auto shared = std::make_shared<const std::string>(text);
  const auto compiled = asPage ? CompiledTemplate::OfPage(shared) : CompiledTemplate::OfText(shared);
  for (auto _ : state) {
    UploadFileList files;
    benchmark::DoNotOptimize(compiled->Expand(*snapshot, "", files));
  }
  Report(state, text.size());
}

// As the outputs do it, with the refresh header of the moment.
void CompiledWithHeader(benchmark::State& state, const std::string& text) {
  Station station;
  const SnapshotPtr snapshot = station.service.TakeSnapshot();
  const PageTemplate page(text, {});
  for (auto _ : state) {
    UploadFileList files;
    benchmark::DoNotOptimize(page.Expand({30, true, "3.0.0"}, *snapshot, "", files));
  }
  Report(state, text.size());
}

void Compile(benchmark::State& state, const std::string& text) {
  const auto shared = std::make_shared<const std::string>(text);
  for (auto _ : state) benchmark::DoNotOptimize(CompiledTemplate::OfPage(shared));
  Report(state, text.size());
}

std::string Replaced(std::string text, std::string_view what, std::string_view by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
    text.replace(at, what.size(), by);
  return text;
}

// `keepsRoom`: all turns write to one string, which spares it the growing that ours is spared by knowing the
// size of the last page.
void Ctemplate(benchmark::State& state, const std::string& text, bool keepsRoom) {
  std::string theirs = Replaced(text, "[(<ZEB_NOW_ARTISTS>!=)", "{{#BY}}");
  theirs = Replaced(Replaced(theirs, "</li>]", "</li>{{/BY}}"), "<ZEB_NOW_ARTISTS>", "{{ARTISTS}}");
  theirs = Replaced(theirs, "<ZEB_NOW_ITEMNAME>", "{{ITEMNAME}}");
  const std::unique_ptr<ctemplate::Template> compiled(
      ctemplate::Template::StringToTemplate(theirs, ctemplate::DO_NOT_STRIP));
  Station station;
  ctemplate::TemplateDictionary values("values");
  values.SetValue("ARTISTS", station.Expand("<ZEB_NOW_ARTISTS>"));
  values.SetValue("ITEMNAME", station.Expand("<ZEB_NOW_ITEMNAME>"));
  values.ShowSection("BY");
  std::string page;
  if (!compiled || !compiled->Expand(&page, &values) || page != station.Expand(text))
    return state.SkipWithError("it expands to something else");
  for (auto _ : state) {
    if (!keepsRoom) page = std::string();
    page.clear();
    compiled->Expand(&page, &values);
    benchmark::DoNotOptimize(page.data());
  }
  Report(state, text.size());
}

void ExpandLiterally(benchmark::State& state, const std::string& text) {
  Station station;
  for (auto _ : state) benchmark::DoNotOptimize(literal::Expand(text, station.service, "", station.uploads));
  Report(state, text.size());
}

void Copy(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    std::string copy(text);
    benchmark::DoNotOptimize(copy.data());
  }
  Report(state, text.size());
}

void Undo(benchmark::State& state, const std::string& text) {
  for (auto _ : state) benchmark::DoNotOptimize(UndoEscapedTags(text));
  Report(state, text.size());
}

BENCHMARK_CAPTURE(Expand, short_text, std::string(kDefaultSimpleTextFormat));
BENCHMARK_CAPTURE(Expand, ordinary_50K, OrdinaryPage(50 << 10));
BENCHMARK_CAPTURE(Expand, ordinary_1M, OrdinaryPage(1 << 20));
BENCHMARK_CAPTURE(Expand, dense_50K, DensePage(50 << 10));
BENCHMARK_CAPTURE(Expand, dense_1M, DensePage(1 << 20));
BENCHMARK_CAPTURE(ExpandAsPage, ordinary_1M, OrdinaryPage(1 << 20));
BENCHMARK_CAPTURE(ExpandAsPage, dense_1M, DensePage(1 << 20));
BENCHMARK_CAPTURE(Compiled, page_ordinary_50K, OrdinaryPage(50 << 10), true);
BENCHMARK_CAPTURE(Compiled, text_ordinary_50K, OrdinaryPage(50 << 10), false);
BENCHMARK_CAPTURE(CompiledWithHeader, ordinary_50K, OrdinaryPage(50 << 10));
BENCHMARK_CAPTURE(Ctemplate, ordinary_50K, OrdinaryPage(50 << 10), false);
BENCHMARK_CAPTURE(Ctemplate, ordinary_50K_kept, OrdinaryPage(50 << 10), true);
BENCHMARK_CAPTURE(Compiled, page_ordinary_1M, OrdinaryPage(1 << 20), true);
BENCHMARK_CAPTURE(Compiled, text_ordinary_1M, OrdinaryPage(1 << 20), false);
BENCHMARK_CAPTURE(CompiledWithHeader, ordinary_1M, OrdinaryPage(1 << 20));
BENCHMARK_CAPTURE(Ctemplate, ordinary_1M, OrdinaryPage(1 << 20), false);
BENCHMARK_CAPTURE(Ctemplate, ordinary_1M_kept, OrdinaryPage(1 << 20), true);
BENCHMARK_CAPTURE(Compiled, page_dense_50K, DensePage(50 << 10), true);
BENCHMARK_CAPTURE(Ctemplate, dense_50K, DensePage(50 << 10), false);
BENCHMARK_CAPTURE(Ctemplate, dense_50K_kept, DensePage(50 << 10), true);
BENCHMARK_CAPTURE(Compiled, page_dense_1M, DensePage(1 << 20), true);
BENCHMARK_CAPTURE(Ctemplate, dense_1M, DensePage(1 << 20), false);
BENCHMARK_CAPTURE(Ctemplate, dense_1M_kept, DensePage(1 << 20), true);
BENCHMARK_CAPTURE(Compile, ordinary_1M, OrdinaryPage(1 << 20));
BENCHMARK_CAPTURE(Compile, dense_1M, DensePage(1 << 20));
BENCHMARK_CAPTURE(Undo, ordinary_1M, OrdinaryPage(1 << 20));
BENCHMARK_CAPTURE(Copy, ordinary_1M, OrdinaryPage(1 << 20));
BENCHMARK_CAPTURE(ExpandLiterally, ordinary_50K, OrdinaryPage(50 << 10));
BENCHMARK_CAPTURE(ExpandLiterally, dense_50K, DensePage(50 << 10));

}  // namespace
}  // namespace zeb
