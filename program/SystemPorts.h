// The ports that this system has, under the names that programs use.
#pragma once

#ifdef _WIN32
#include "platform/qt/windows/PipeSockets.h"
#include "platform/windows/WinCodePages.h"
#include "platform/windows/WinEncoderAutomation.h"
#include "platform/windows/WinFiles.h"
#include "platform/windows/WinFtpSessions.h"
#include "platform/windows/WinProcesses.h"
#include "platform/windows/WinSerialPortControl.h"
#else
#include "platform/posix/IconvCodePages.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixProcesses.h"
#include "platform/qt/posix/QtLocalSockets.h"
#include "platform/qt/posix/QtSerialPortControl.h"
#endif
#include "platform/common/CurlFtpSession.h"

namespace zeb {

#ifdef _WIN32
using SystemFiles = WinFiles;
using SystemProcesses = WinProcesses;
using SystemCodePages = WinCodePages;
using SystemSerialPorts = WinSerialPorts;
using SystemLocalSockets = PipeSockets;
// The system's own client; where TLS is asked for, libcurl.
class SystemFtpSessions : public FtpSessions {
 public:
  std::unique_ptr<FtpSession> Make() override { return plain_.Make(); }

 private:
  CurlFtpSessions secure_;
  WinFtpSessions plain_{secure_};
};
#else
using SystemFiles = PosixFiles;
using SystemProcesses = PosixProcesses;
using SystemCodePages = IconvCodePages;
using SystemSerialPorts = QtSerialPorts;
using SystemLocalSockets = QtLocalSockets;
using SystemFtpSessions = CurlFtpSessions;
#endif

}  // namespace zeb
