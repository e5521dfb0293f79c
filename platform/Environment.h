// Environment: the ports and places that the engine works with, put together once by the main program or a
// test and passed by reference. Owns nothing; outlives everything that holds it. Who uses a port includes its
// header.
#pragma once

#include <string>

namespace zeb {

class CartStore;
class CodePages;
class EncoderAutomation;
class EventLoop;
class FileSystem;
class FtpSessions;
class Markup;
class Network;
class Operator;
class Processes;
class SerialPorts;
class SettingsHive;
class ZipFiles;

struct Environment {
  EventLoop& loop;
  SettingsHive& hive;
  FileSystem& files;
  Network& network;
  Operator& person;
  CartStore& carts;
  std::string dataFolder;    // what relative names start from
  std::string settingsRoot;  // "Software\Hexmoor\ZEB v3\Profiles\Profile1"; the start-up may switch it
  bool preserveTempFiles = false;
  // False: services are loaded for their settings to be looked at and changed; another program publishes
  // them, so here nothing is started.
  bool publishes = true;
  EncoderAutomation* encoders = nullptr;  // null: the platform has none
  SerialPorts* serialPorts = nullptr;     // null: this program has none
  Markup* markup = nullptr;               // none: no XML is read, and HTML in text fields stays as it is
  FtpSessions* ftp = nullptr;             // null: the platform has none
  Processes* processes = nullptr;         // null: this program runs no others
  CodePages* codePages = nullptr;         // none: language files are read in UTF-8 only
  ZipFiles* zips = nullptr;               // none: this program writes none
  std::string programFolder = {};         // where the program lies; "": nothing comes with it

  std::string ServiceKey(int serviceNumber) const {
    return settingsRoot + "\\Service" + std::to_string(serviceNumber);
  }
};

}  // namespace zeb
