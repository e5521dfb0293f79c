#include "platform/windows/WinFtpSessions.h"

#include <utility>

namespace zeb {

Outcome WinFtpSession::Connect(const FtpTarget& target) {
  if (target.tls != hasTls_) {
    present_->Close();
    std::unique_ptr<FtpSession> other = target.tls ? tls_.Make() : std::make_unique<WinInetFtpSession>();
    {
      const std::lock_guard lock(mutex_);
      present_.swap(other);
      hasTls_ = target.tls;
      if (cancelled_) present_->Cancel();
    }
    if (Outcome opened = present_->Open(); !opened) return opened;
  }
  return present_->Connect(target);
}

void WinFtpSession::Cancel() {
  const std::lock_guard lock(mutex_);
  cancelled_ = true;
  present_->Cancel();
}

}  // namespace zeb
