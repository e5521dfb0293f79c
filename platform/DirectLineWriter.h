// DirectLineWriter: hands each line to its sink at once, on the caller's thread. For programs that may wait
// for whoever reads their lines, and for tests.
#pragma once

#include <utility>

#include "platform/LineWriter.h"

namespace zeb {

class DirectLineWriter : public LineWriter {
 public:
  explicit DirectLineWriter(LineSink sink) : sink_(std::move(sink)) {}
  void Write(LogLine line) override { sink_(line); }

 private:
  LineSink sink_;
};

}  // namespace zeb
