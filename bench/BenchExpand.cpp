// Template expansion: short texts, pages, and what they are measured against (a copy of the page, and the
// literal step-by-step expansion that the tests compare with).
#include <benchmark/benchmark.h>

#include <cstring>

#include "core/OutputTypes.h"
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
BENCHMARK_CAPTURE(Undo, ordinary_1M, OrdinaryPage(1 << 20));
BENCHMARK_CAPTURE(Copy, ordinary_1M, OrdinaryPage(1 << 20));
BENCHMARK_CAPTURE(ExpandLiterally, ordinary_50K, OrdinaryPage(50 << 10));
BENCHMARK_CAPTURE(ExpandLiterally, dense_50K, DensePage(50 << 10));

}  // namespace
}  // namespace zeb
