// What an arriving item costs: comparing it with the one in its slot, storing it, reading its elements.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>

#include "core/clsZEBItemInfo.h"

namespace zeb {
namespace {

// A song as playout systems send them, every common field filled. Each call makes fields of its own.
clsZEBItemInfo Song() {
  clsZEBItemInfo item;
  item.ItemIndexNumber = 1;
  ItemFields& fields = item.Edit();
  fields.CartLine1 = "The Night Train to Somewhere Else";
  fields.CartLine2 = "The Example Street Orchestra";
  fields.CartLine3 = "feat. A. Singer";
  fields.CartNumber = 104711;
  fields.CartItemLength = 214.5F;
  fields.ItemName = "The Night Train to Somewhere Else";
  fields.ItemHREF = "https://www.example.org/songs/the-night-train-to-somewhere-else";
  fields.TitleID = "T-0102030405-6";
  fields.AlbumName = "Departures and Arrivals (Deluxe Edition)";
  fields.ItemReference = "5f0c2a4e-3a1b-4c7e-9d51-0f7a2b9f1c11";
  fields.SchedulerReference = "2026030212-00471";
  fields.ItemCode = "A1";
  fields.ItemStartDate = 46083;
  fields.ItemStartTime = 43200;
  fields.Artist1Name = "The Example Street Orchestra";
  fields.Artist2Name = "A. Singer";
  fields.Artists = "The Example Street Orchestra and A. Singer";
  fields.Artist1HREF = "https://www.example.org/artists/the-example-street-orchestra";
  fields.OnlineStoreReference = "https://store.example.org/item/0102030405";
  fields.PictureHREF = "https://www.example.org/pictures/0102030405.jpg";
  fields.ItemType = 7;
  fields.CopyrightProductTitle = "Departures and Arrivals";
  fields.CopyrightMusicTitle = "The Night Train to Somewhere Else";
  fields.CopyrightRecordLabel = "Example Records International";
  fields.CopyrightRecordNumber = "EXR 0102 CD";
  fields.CopyrightComposer = "B. Composer, C. Writer";
  fields.CopyrightPerformer = "The Example Street Orchestra";
  fields.CopyrightPublisher = "Example Music Publishing Ltd";
  fields.CopyrightCode = "QZ-ABC-26-00001";
  fields.CopyrightTotalDuration = 214.5F;
  fields.CopyrightMusicDuration = 214.5F;
  fields.Notes = "From the new album, out this Friday";
  fields.WebNotes = "Listen again on our web site until Sunday";
  item.AddPictureFile("C:\\Pictures\\0102030405.jpg");
  return item;
}

void BM_ItemCopy(benchmark::State& state) {
  const clsZEBItemInfo item = Song();
  for (auto _ : state) benchmark::DoNotOptimize(item.Copy());
}
BENCHMARK(BM_ItemCopy);

// A copy that is written afterwards, which ends the sharing.
void BM_ItemCopyAndEdit(benchmark::State& state) {
  const clsZEBItemInfo item = Song();
  for (auto _ : state) {
    clsZEBItemInfo copy = item.Copy();
    copy.Edit().ItemType = 3;
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(BM_ItemCopyAndEdit);

// The repeat of an item, which arrived as a message of its own.
void BM_ItemIsSameEqual(benchmark::State& state) {
  const clsZEBItemInfo item = Song(), again = Song();
  for (auto _ : state) benchmark::DoNotOptimize(item.IsSame(again, true));
}
BENCHMARK(BM_ItemIsSameEqual);

// Only the field that is compared last differs.
void BM_ItemIsSameDifferent(benchmark::State& state) {
  const clsZEBItemInfo item = Song();
  clsZEBItemInfo other = Song();
  other.Edit().CustomField3 = "different";
  for (auto _ : state) benchmark::DoNotOptimize(item.IsSame(other, false));
}
BENCHMARK(BM_ItemIsSameDifferent);

// Into a buffer that is used again, as template expansion does it.
void BM_GetElementByName(benchmark::State& state) {
  const clsZEBItemInfo item = Song();
  constexpr std::string_view kNames[] = {"ItemName",          "ARTISTS",  "copyrightmusicduration",
                                         "PictureFileName_1", "ITEMTYPE", "CustomField1",
                                         "CartDescription2",  "AlbumName"};
  std::string text;
  std::size_t i = 0;
  for (auto _ : state) {
    text.clear();
    item.AppendElementByName(text, kNames[i++ % std::size(kNames)], true);
    benchmark::DoNotOptimize(text);
  }
}
BENCHMARK(BM_GetElementByName);

}  // namespace
}  // namespace zeb
