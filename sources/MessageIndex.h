// MessageIndex: where the known keys of an item message stand, found in one pass.
//
// Looks at the message without copying it; the message must outlive it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

// In the order in which they take effect. Those from kCField1 on may also stand in the cart's own record.
enum class MessageKey : std::uint8_t {
  kPromote,
  kIType,
  kIDt,
  kEstStTm,
  kHDRef,
  kITitle,
  kIDesc1,
  kIDesc2,
  kIDesc3,
  kIRef,
  kSchRef,
  kAName1,
  kAName2,
  kAName3,
  kSerialisation,
  kCField1,
  kCField2,
  kCField3,
  kStNotes,
  kDNotes,
  kWNotes,
  kRNotes,
  kOStRef,
  kComposer,
  kCCode,
  kCMDur,
  kCTDur,
  kMTitle,
  kPerformer,
  kPTitle,
  kPublisher,
  kRecLabel,
  kRecNo,
  kPicFName
};
inline constexpr std::size_t kNumberMessageKeys = 34;
inline constexpr int kMaxPictures = 256;  // one more than an item holds, so that too many are seen

std::string_view MessageKeyName(MessageKey key);

class MessageIndex {
 public:
  explicit MessageIndex(std::string_view message);

  bool Has(MessageKey key) const { return starts_[static_cast<std::size_t>(key)] != kAbsent; }
  std::optional<std::string_view> RawValue(MessageKey key) const;
  // The value of <number>PicFName.
  std::optional<std::string_view> RawPicture(int number) const;
  bool HasNumberedPictures() const { return !pictureStarts_.empty(); }

 private:
  static constexpr std::size_t kAbsent = std::string_view::npos;
  void NoteKey(std::string_view key, std::size_t hash, std::size_t valueStart);
  void NotePicture(std::string_view key, std::size_t valueStart);

  std::string_view message_;
  std::array<std::size_t, kNumberMessageKeys> starts_;  // of the values
  std::vector<std::size_t> pictureStarts_;              // by number
};

}  // namespace zeb
