// What any FileSystem must do about symbolic links, checked against both the simulated and the real one. As
// FileSystemContract.h; a suite also supplies MakeLink(path, to).
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/platform/FileSystemContract.h"

namespace zeb {

template <class Fixture>
struct FileLinksContract : OnFiles<Fixture> {};

TYPED_TEST_SUITE_P(FileLinksContract);

TYPED_TEST_P(FileLinksContract, ALinkIsReplacedOrFollowedOnce) {
  ASSERT_TRUE(this->files.CreateFolders(this->In("share")));
  this->Put("share/page", "old");
  this->MakeLink(this->In("whole"), this->In("share/page"));
  this->MakeLink(this->In("relative"), "share/page");
  this->MakeLink(this->In("dangling"), "share/new");
  LinkRules follow;
  follow.follow = true;
  for (const char* name : {"whole", "relative", "dangling"}) {
    const std::string bytes = std::string("through ") + name;
    this->Place(name, bytes, follow);
    EXPECT_EQ(this->Contents(name == std::string("dangling") ? "share/new" : "share/page"), bytes);
  }
  const auto target = this->files.FindTarget(this->In("relative"), follow);
  ASSERT_TRUE(target);
  EXPECT_EQ(target.Value()->Path(), this->In("share/page"));
  EXPECT_EQ(this->files.List(this->In("share")).Value(), (std::vector<std::string>{"new", "page"}));

  this->Place("whole", "a file of its own");
  EXPECT_EQ(this->Contents("whole"), "a file of its own");
  EXPECT_EQ(this->Contents("share/page"), "through relative");
}

TYPED_TEST_P(FileLinksContract, ALinkIsNotFollowedJustAnywhere) {
  ASSERT_TRUE(this->files.CreateFolders(this->In("data/deep")));
  this->Put("template", "keep");
  this->Put("data/settings.db", "keep");
  this->MakeLink(this->In("back"), "template");
  LinkRules rules;
  rules.follow = true;
  rules.notBelow = this->In("data");
  rules.notFile = this->In("template");
  const std::string data = "ZEB's data folder";
  const std::pair<const char*, std::string> cases[] = {
      {"data/settings.db", data},          {"data/new", data},   {"data/deep/new", data},
      {"template", "the template itself"}, {"data", "a folder"}, {"back", "a link"},
  };
  for (const auto& [to, what] : cases) {
    const std::string link = "to " + std::string(FileNamePart(to));
    this->MakeLink(this->In(link), to);
    this->Refused(
        this->Placed(this->In(link), "attack", rules),
        "it is a link to '" + std::string(to) + "', and that is " + what + "; let it lead to another file");
    ASSERT_TRUE(this->files.Delete(this->In(link)));
  }
  this->MakeLink(this->In("nowhere"), "none/page");
  this->Refused(
      this->Placed(this->In("nowhere"), "x", rules),
      "it is a link to 'none/page', whose folder cannot be opened (No such file or directory); check that "
      "the disk or share is there");
  EXPECT_EQ(this->Contents("template"), "keep");
  EXPECT_EQ(this->Contents("data/settings.db"), "keep");
  EXPECT_EQ(this->files.List(this->In("data")).Value(), (std::vector<std::string>{"deep", "settings.db"}));
}

REGISTER_TYPED_TEST_SUITE_P(FileLinksContract, ALinkIsReplacedOrFollowedOnce, ALinkIsNotFollowedJustAnywhere);

}  // namespace zeb
