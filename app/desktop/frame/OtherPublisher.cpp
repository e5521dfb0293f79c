#include "app/desktop/frame/OtherPublisher.h"

#include <exception>
#include <utility>
#include <vector>

#include "app/PublisherLink.h"
#include "core/SettingsPaths.h"
#include "dashboard/DashboardSettings.h"

namespace zeb {

OtherPublisher::OtherPublisher(Ports ports, Boxes& boxes) : ports_(std::move(ports)), boxes_(boxes) {}

void OtherPublisher::Meet(const std::string& folder, bool silent, const std::function<void()>& ended) {
  ports_.loop.Start("raise the first window", [this, folder, silent, ended] {
    const PublisherLink::Reply raised =
        PublisherLink(ports_.loop, ports_.sockets, folder).Ask("POST", kRaiseWindows);
    if (raised.Done() || silent) return ended();
    ports_.loop.Post([this, folder, ended] { Offer(folder, ended); });
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

void OtherPublisher::Offer(const std::string& folder, const std::function<void()>& ended) {
  const std::string said = "Another publisher already runs on the data folder '" + folder +
                           "', and only one can publish at a time.";
  const std::string url = PageUrl();
  if (url.empty()) return boxes_.Show(nullptr, MessageIcon::kInformation, said, ended);
  boxes_.Choose(nullptr, said + "\n\nIts web page shows what is on air: " + url, {"Open the web page"},
                [this, url, ended](int chosen) {
                  if (chosen == 0) ports_.openPage(url);
                  ended();
                });
}

}  // namespace zeb
