// LineWriter: where the lines of the journal and the debug log go on their way out. Taking one never waits
// for whoever reads them, nor for a disk.
//
// Lines keep their order. Owned by the main program (the journal's) or the debug log; where no thread is
// wanted, in tests and short-lived programs, a DirectLineWriter stands in.
#pragma once

#include <functional>
#include <string>

namespace zeb {

struct LogLine {
  std::string file;  // "" where there is one place for all lines
  std::string time;  // what stands before the text, with its blank; may be ""
  std::string text;  // without a line end
};

// Puts one line into its place, however long that takes; false when it is lost. May be called on a thread of
// the writer's, one call at a time, and owns what it uses, since a call may outlive the writer.
using LineSink = std::function<bool(const LogLine&)>;

class LineWriter {
 public:
  virtual ~LineWriter() = default;
  // On any thread.
  virtual void Write(LogLine line) = 0;
};

}  // namespace zeb
