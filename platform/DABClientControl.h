// DABClientControl: the connection to a DAB label server, as the DAB output drives it: a state value and the
// operations connect, log on, send a label and close. Nothing here waits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/Control.h"

namespace zeb {

class DABClientControl : public Control {
 public:
  enum State : std::int32_t {
    kClosed = 0,
    kClosing = 10,
    kConnecting = 20,  // also while the server's name is looked up
    kConnected = 30,
    kLoggingOn = 80,
    kLoggedOn = 100
  };

  // A connection that was logged on has ended, not by Close; LastError says why. Comes on the loop's thread,
  // never from inside a call.
  std::function<void()> onLost;

  virtual std::int32_t CurrentState() const = 0;
  // False: it cannot even begin; LastError says why. Drops a connection that is there.
  virtual bool Connect(const std::string& server, std::uint16_t port) = 0;
  virtual void LogOn(const std::string& service, const std::string& password) = 0;
  virtual void SendLabel(const std::string& label) = 0;  // UTF-8, without line breaks
  virtual std::size_t UnansweredLabels() const = 0;      // sent, and neither taken nor refused yet
  virtual void Close() = 0;

  // The last thing that went wrong; "" since a later success.
  virtual std::string LastError() const = 0;
  // Whom it is connected to and logged on as; "" and 0 when it is not.
  virtual std::string Server() const = 0;
  virtual std::uint16_t Port() const = 0;
  virtual std::string Service() const = 0;
};

}  // namespace zeb
