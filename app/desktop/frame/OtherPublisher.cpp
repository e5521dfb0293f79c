#include "app/desktop/frame/OtherPublisher.h"

#include <exception>
#include <utility>
#include <vector>

#include "app/PublisherLink.h"
#include "core/SettingsPaths.h"
#include "dashboard/DashboardSettings.h"

namespace zeb {

OtherPublisher::OtherPublisher(Ports ports, Boxes& boxes) : ports_(std::move(ports)), boxes_(boxes) {}

void OtherPublisher::Meet(const std::string& folder, bool silent, const Answered& answered) {
  ports_.loop.Start("raise the first window", [this, folder, silent, answered] {
    const PublisherLink::Reply raised =
        PublisherLink(ports_.loop, ports_.sockets, folder).Ask("POST", kRaiseWindows);
    if (raised.Done() || silent) return answered(false);
    ports_.loop.Post([this, folder, answered] { Offer(folder, answered); });
  });
}

std::string OtherPublisher::PageUrl() const {
  if (ports_.hive == nullptr) return "";
  try {
    const DashboardSettings settings =
        DashboardSettings::Read(*ports_.hive, ChooseSettingsRoot(*ports_.hive).inUse);
    if (settings.port == 0) return "";
    const bool any = settings.address == "0.0.0.0" || settings.address == "::";
    const std::string host = any ? "127.0.0.1" : settings.address;
    return "http://" + (host.find(':') == std::string::npos ? host : "[" + host + "]") + ":" +
           std::to_string(settings.port) + "/";
  } catch (const std::exception&) {
    return "";
  }
}

void OtherPublisher::Offer(const std::string& folder, const Answered& answered) {
  std::string said = "Another publisher already runs on the data folder '" + folder +
                     "', and only one can publish at a time.";
  const auto end = [answered] { answered(false); };
  if (ports_.hive == nullptr) return boxes_.Show(nullptr, MessageIcon::kInformation, said, end);
  const std::string url = PageUrl();
  std::vector<std::string> choices;
  if (!url.empty()) {
    said += "\n\nIts web page shows what is on air: " + url;
    choices.emplace_back("Open the web page");
  }
  choices.emplace_back("Edit its settings");
  boxes_.Choose(nullptr, said, choices, [this, url, answered](int chosen) {
    const bool edit = chosen == (url.empty() ? 0 : 1);
    if (chosen == 0 && !edit) ports_.openPage(url);
    answered(edit);
  });
}

}  // namespace zeb
