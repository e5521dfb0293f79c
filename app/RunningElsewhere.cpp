#include "app/RunningElsewhere.h"

#include <utility>

#include "app/PublisherLink.h"

namespace zeb {

RunningElsewhere::RunningElsewhere(EventLoop& loop, LocalSockets& sockets, std::string folder,
                                   std::function<void(Told, const std::string& reason)> told)
    : loop_(loop), sockets_(sockets), folder_(std::move(folder)), told_(std::move(told)) {}

void RunningElsewhere::Stored() {
  if (!gather_.Running()) gather_ = loop_.After(kGather, [this] { Tell(); });
}

// One telling at a time: what is stored meanwhile is told afterwards, or a change could be passed over.
void RunningElsewhere::Tell() {
  again_ = telling_;
  if (std::exchange(telling_, true)) return;
  loop_.Start("tell the publisher", [this, mark = epoch_.Now(), &loop = loop_, &sockets = sockets_,
                                     folder = folder_] {
    const PublisherLink::Reply reply = PublisherLink(loop, sockets, folder).Reload();
    if (!mark.Holds()) return;
    telling_ = false;
    told_(reply.Done() ? Told::kTaken : reply.notRunning ? Told::kNobodyRuns : Told::kFailed, reply.problem);
    if (mark.Holds() && std::exchange(again_, false)) Stored();
  });
}

void RunningElsewhere::RemoveService(int number, std::function<void(const frmMain::Removed&)> done) {
  loop_.Start("remove a service",
              [number, done = std::move(done), &loop = loop_, &sockets = sockets_, folder = folder_] {
                const PublisherLink::Reply reply = PublisherLink(loop, sockets, folder).RemoveService(number);
                if (reply.Done()) return done({});
                done({.outcome = Failure{reply.problem}, .nobodyRuns = reply.notRunning});
              });
}

}  // namespace zeb
