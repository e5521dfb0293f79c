// SqliteHistoryReader: reads the file that a SqliteHistory writes, while it does or not, in any process.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/HistoryStore.h"

namespace zeb {

class HistoryFile;

class SqliteHistoryReader : public HistoryReader {
 public:
  // Creates nothing; the reason of a failure is one line that names the file.
  static Result<std::unique_ptr<HistoryReader>> Open(const std::string& path);
  ~SqliteHistoryReader() override;

  Result<std::vector<HistoryItem>> Items(const HistoryFilter& filter, HistoryPlace place, int most) override;
  Result<std::vector<HistoryPublication>> Publications(const HistoryFilter& filter, HistoryPlace place,
                                                       int most) override;
  Result<std::vector<Update>> Updates(const HistoryFilter& filter, HistoryPlace place, int most) override;
  Result<std::optional<Update>> FindUpdate(std::int64_t id) override;
  Result<std::string> Bytes(std::int64_t number) override;
  Result<std::vector<std::string>> Outputs(int service) override;
  Result<std::vector<std::string>> Parts(int service, const std::string& output) override;
  Result<std::optional<HistoryPublication>> LastPublication(int service, const std::string& output,
                                                            const std::string& part, std::int64_t utc,
                                                            HistoryResult result) override;
  Result<std::optional<HistoryItem>> LastItem(int service, int slot, std::int64_t utc) override;

 private:
  explicit SqliteHistoryReader(std::unique_ptr<HistoryFile> file);

  std::unique_ptr<HistoryFile> file_;
};

}  // namespace zeb
