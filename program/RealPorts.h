// RealPorts: the ports of this platform, made together in the order in which they need each other. The one
// place that chooses them for a program with the engine inside.
#pragma once

#include <QCoreApplication>
#include <string>

#include "platform/Environment.h"
#include "platform/common/LibxmlMarkup.h"
#include "platform/common/LibzipFiles.h"
#include "platform/qt/QtLoop.h"
#include "platform/qt/QtNetwork.h"
#include "program/SystemPorts.h"

namespace zeb {

// Needs the application object of Qt, and outlives all that uses its ports.
struct RealPorts {
  // Relative names of files start from the data folder.
  explicit RealPorts(const std::string& folder) : files(folder) {}

  // What the engine works with; the three that it is given outlive it too.
  Environment EngineOn(SettingsHive& hive, Operator& person, CartStore& carts, const std::string& folder) {
    Environment environment{loop, hive, files, network, person, carts, folder, ""};
    environment.serialPorts = &serialPorts;
    environment.markup = &markup;
    environment.ftp = &ftp;
    environment.processes = &processes;
    environment.codePages = &codePages;
    environment.zips = &zips;
#ifdef _WIN32
    environment.encoders = &encoders;
#endif
    environment.programFolder = QCoreApplication::applicationDirPath().toStdString();
    return environment;
  }

  QtLoop loop;
  QtNetwork network{loop};
  SystemSerialPorts serialPorts{loop, network};
  SystemFiles files;
  LibxmlMarkup markup;
  SystemFtpSessions ftp;
  SystemProcesses processes;
  SystemCodePages codePages;
  LibzipFiles zips;
  SystemLocalSockets localSockets{loop};
#ifdef _WIN32
  WinEncoderAutomation encoders;  // no other system has any
#endif
};

}  // namespace zeb
