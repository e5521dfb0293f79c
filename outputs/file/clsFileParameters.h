// clsFileParameters: one pair of a source template and the destination that it becomes, with its update rules
// and page options. Shared by the file output (destination: a local path) and the web output (destination: a
// path on the server). A value; it touches no files.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "core/OutputTypes.h"
#include "core/ServiceSnapshot.h"
#include "core/SettingFields.h"
#include "platform/SettingsHive.h"

namespace zeb {

// What is stored of a pair; the initial values are the defaults.
struct PairSettings {
  std::string source, destination;  // file names
  bool UseUpdateRules = false;
  std::int32_t UpdateRulesFlags = 0;
  std::int32_t UpdateRulesUsingItem = 0;
  bool UseMultipleVersions = false;
  std::int32_t RefreshTagSeconds = 0;  // 0: no refresh tag
  bool AddNoCache = true;
  std::string SimpleTextFormat{kDefaultSimpleTextFormat};
  std::string EscapeValues;  // a word of text/ValueEscapes.h
  std::string VerifyURL;     // where the public sees the page; "": it is not looked at
};

class clsFileParameters : public PairSettings {
 public:
  // Bits of UpdateRulesFlags.
  enum UpdateFlag : std::int32_t {
    kAdvert = 1,
    kCart = 2,
    kJingle = 4,
    kSong = 8,
    kVoiceCustom = 16,
    kUnknown = 32
  };
  // Values of UpdateRulesUsingItem.
  enum RuleItem : std::int32_t { kCurrentItem = 0, kNextItem = 1, kPreviousItem = 2, kComingSoonItem = 3 };

  const std::string& SourceFileName() const { return source; }
  void SetSourceFileName(std::string name) { source = std::move(name); }
  const std::string& DestinationFileName() const { return destination; }
  void SetDestinationFileName(std::string name) { destination = std::move(name); }
  // Up to and including the last separator; "" when there is none.
  std::string SourceFolder() const;
  std::string DestinationFolder() const;

  // True without rules in use, or when the bit is set. Setting ignores the value that it is given: with rules
  // in use it sets the bit, else it does nothing. Bits are cleared only by assigning UpdateRulesFlags.
  bool UpdateIfAdvert() const { return Allows(kAdvert); }
  bool UpdateIfCart() const { return Allows(kCart); }
  bool UpdateIfJingle() const { return Allows(kJingle); }
  bool UpdateIfSong() const { return Allows(kSong); }
  bool UpdateIfVoiceCustom() const { return Allows(kVoiceCustom); }
  bool UpdateIfUnknown() const { return Allows(kUnknown); }
  void SetUpdateIfAdvert(bool) { Allow(kAdvert); }
  void SetUpdateIfCart(bool) { Allow(kCart); }
  void SetUpdateIfJingle(bool) { Allow(kJingle); }
  void SetUpdateIfSong(bool) { Allow(kSong); }
  void SetUpdateIfVoiceCustom(bool) { Allow(kVoiceCustom); }
  void SetUpdateIfUnknown(bool) { Allow(kUnknown); }

  // Whether the pair is to be rewritten for these items. Without an item to look at it is.
  bool IsDue(const ServiceSnapshot& snapshot) const;

 private:
  bool Allows(UpdateFlag flag) const { return !UseUpdateRules || (UpdateRulesFlags & flag) != 0; }
  void Allow(UpdateFlag flag);
  bool AllowsType(std::int32_t itemType) const;
};

// A damaged count must not make the program read settings for hours.
inline constexpr std::int32_t kMaxPairs = 1000;

// The pairs of output `outputIndex`, as stored in the output type's key.
std::vector<clsFileParameters> ReadPairs(SettingsHive& hive, const std::string& key, int outputIndex);
void WritePairs(SettingsHive& hive, const std::string& key, int outputIndex,
                const std::vector<clsFileParameters>& pairs);
// All of them as text, for telling whether two outputs are set alike.
std::string PairsText(const std::vector<clsFileParameters>& pairs);
// The settings of one pair, and what stands before their names and the pairs' count ("Output2.").
SettingList PairSettingList();
std::string PairNamesStart(int outputIndex);
inline constexpr const char* kPairCountName = "NumberFiles";

}  // namespace zeb
