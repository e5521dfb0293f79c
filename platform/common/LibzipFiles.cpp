#include "platform/common/LibzipFiles.h"

#include <zip.h>

#include <memory>

namespace zeb {
namespace {

// A zip file being made in a buffer of libzip's.
class Archive {
 public:
  Archive() {
    source_.reset(zip_source_buffer_create(nullptr, 0, 0, nullptr));
    if (!source_) return;
    zip_source_keep(source_.get());  // the archive takes one, this object keeps one
    archive_.reset(zip_open_from_source(source_.get(), ZIP_TRUNCATE, nullptr));
    if (!archive_) zip_source_free(source_.get());
  }

  bool Open() const { return archive_ != nullptr; }

  // The bytes must stay until Close.
  bool Add(const ZipEntry& entry, WallTime moment) {
    zip_source_t* bytes = zip_source_buffer(archive_.get(), entry.bytes.data(), entry.bytes.size(), 0);
    if (bytes == nullptr) return false;
    const zip_int64_t index = zip_file_add(archive_.get(), entry.name.c_str(), bytes, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
      zip_source_free(bytes);
      return false;
    }
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::seconds>(moment - day));
    // As the format has it: years from 1980, seconds by two.
    const auto dosDate =
        static_cast<zip_uint16_t>((static_cast<int>(date.year()) - 1980) << 9 |
                                  static_cast<int>(static_cast<unsigned>(date.month())) << 5 |
                                  static_cast<int>(static_cast<unsigned>(date.day())));
    const auto dosTime = static_cast<zip_uint16_t>(time.hours().count() << 11 | time.minutes().count() << 5 |
                                                   time.seconds().count() / 2);
    return zip_file_set_dostime(archive_.get(), static_cast<zip_uint64_t>(index), dosTime, dosDate, 0) == 0;
  }

  std::string Problem() const { return zip_strerror(archive_.get()); }

  bool Close() {
    if (zip_close(archive_.get()) != 0) return false;
    (void)archive_.release();
    return true;
  }

  Result<std::string> Bytes() const {
    zip_source_t* source = source_.get();
    zip_stat_t stat;
    if (zip_source_stat(source, &stat) != 0 || zip_source_open(source) != 0)
      return Failure{"the zip file cannot be made: it cannot be read back"};
    std::string bytes(stat.size, '\0');
    const zip_int64_t read = zip_source_read(source, bytes.data(), bytes.size());
    zip_source_close(source);
    if (read != static_cast<zip_int64_t>(bytes.size()))
      return Failure{"the zip file cannot be made: it cannot be read back"};
    return bytes;
  }

 private:
  std::unique_ptr<zip_source_t, decltype(&zip_source_free)> source_{nullptr, &zip_source_free};
  std::unique_ptr<zip_t, decltype(&zip_discard)> archive_{nullptr, &zip_discard};
};

}  // namespace

Result<std::string> LibzipFiles::Make(const std::vector<ZipEntry>& entries, WallTime moment) const {
  Archive archive;
  if (!archive.Open()) return Failure{"the zip file cannot be made: there is not enough memory"};
  for (const ZipEntry& entry : entries)
    if (!archive.Add(entry, moment))
      return Failure{"the zip file cannot be made: '" + entry.name + "': " + archive.Problem()};
  if (!archive.Close()) return Failure{"the zip file cannot be made: " + archive.Problem()};
  return archive.Bytes();
}

}  // namespace zeb
