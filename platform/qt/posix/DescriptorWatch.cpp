#include "platform/qt/posix/DescriptorWatch.h"

#include <QSocketNotifier>
#include <utility>

#include "platform/qt/QtLoop.h"

namespace zeb {

DescriptorWatch::DescriptorWatch(QtLoop& loop, int descriptor, Kind kind, std::function<void()> callback)
    : notifier_(
          new QSocketNotifier(descriptor, kind == kRead ? QSocketNotifier::Read : QSocketNotifier::Write)) {
  QObject::connect(notifier_, &QSocketNotifier::activated, notifier_,
                   [&loop, callback = std::move(callback)] { loop.HandleEvent(callback); });
}

// Later, since it may be the one that is calling.
DescriptorWatch::~DescriptorWatch() {
  notifier_->setEnabled(false);
  notifier_->deleteLater();
}

}  // namespace zeb
