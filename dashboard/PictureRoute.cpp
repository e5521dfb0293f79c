#include "dashboard/PictureRoute.h"

#include <chrono>

#include "outputs/file/MediaRules.h"
#include "platform/SettingsHive.h"
#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {

namespace {

constexpr Duration kWorkLimit = std::chrono::seconds(5);

HttpAnswer None(const std::string& why) {
  return ErrorAnswer(404, why);
}

std::string ReadAll(FileReader& file, std::size_t most) {
  std::string bytes(most + 1, '\0');
  std::size_t length = 0;
  while (length < bytes.size()) {
    const Result<std::size_t> got = file.Read(bytes.data() + length, bytes.size() - length);
    if (!got || got.Value() == 0) break;
    length += got.Value();
  }
  bytes.resize(length);
  return bytes;
}

// On a worker.
HttpAnswer Load(FileSystem& files, const MediaRules& rules, const std::string& path) {
  const OpenedMedia media = OpenMedia(files, rules, path);
  if (!media.file) return None(media.reason);
  if (media.file->Size() > PictureRoute::kMostPictureBytes) return None("the picture is too large");
  HttpAnswer answer;
  answer.body = ReadAll(*media.file, PictureRoute::kMostPictureBytes);
  answer.type = PictureType(answer.body);
  if (answer.type.empty() || answer.body.size() > PictureRoute::kMostPictureBytes)
    return None("the file is no picture");
  return answer;
}

}  // namespace

PictureRoute::PictureRoute(Environment& environment, Stations& stations)
    : environment_(environment), stations_(stations), worker_(environment.loop, kWorkLimit) {}

void PictureRoute::AddTo(Router& router) {
  router.AddTask("GET", "/api/v1/services/{n}/picture", Need::kRead,
                 [this](const HttpRequest& request) { return Answer(request); });
}

HttpAnswer PictureRoute::Answer(const HttpRequest& request) {
  const int number = WholeNumber<int>(request.Argument("n")).value_or(0);
  if (number < 1 || number > stations_.Count()) return None("there is no such service");
  const clsZEBItemInfo item = stations_.Present(number)->currentItem;
  const std::string name = item.NumberPictures() > 0 ? item.PictureFileName(1) : std::string();
  if (name.empty()) return None("the item has no picture");
  const MediaRules rules = MakeMediaRules(
      environment_.dataFolder, environment_.hive.ReadText(environment_.settingsRoot, kMediaFolders, ""));
  const auto answer =
      worker_.Run([&files = environment_.files, rules, path = JoinPath(environment_.dataFolder, name)] {
        return Load(files, rules, path);
      });
  return answer ? *answer : ErrorAnswer(503, "the picture's disk does not answer");
}

}  // namespace zeb
