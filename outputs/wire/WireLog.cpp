#include "outputs/wire/WireLog.h"

#include <deque>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "platform/WorkLane.h"
#include "text/Numbers.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {

namespace {

std::string PathOf(const Environment& environment, const ServiceSnapshot& snapshot, std::string_view suffix) {
  const std::string folder = JoinPath(JoinPath(environment.dataFolder, snapshot.LoggingPath),
                                      "Service " + PaddedNumber(snapshot.serviceNumber, 2));
  std::string name = FormatDateTime(environment.loop.Now(), "yyyy-mm-dd");
  name.append(suffix).append(".log");
  return JoinPath(folder, name);
}

Outcome AppendTo(FileSystem& files, const std::string& path, const std::string& text) {
  Outcome outcome = files.Append(path, text);
  // Most often the folder is not there yet.
  if (!outcome && files.CreateFolders(std::string(FolderPart(path)))) outcome = files.Append(path, text);
  return outcome;
}

}  // namespace

// Outlives the log while lines are being written: the last ones of a service that is closed are not lost.
struct WireLog::State : std::enable_shared_from_this<State> {
  explicit State(Environment& given) : environment(given), lane(given.loop) {}

  struct Line {
    std::string path, text;
  };

  void Add(Line line) {
    if (lines.size() >= kMaxWireLogLines) {
      ++leftOut;
      return;
    }
    lines.push_back(std::move(line));
    Start();
  }

  void Start() {
    if (writing || lane.Hangs()) return;
    writing = true;
    environment.loop.Start("wire log", [self = shared_from_this()] { self->WriteAll(); });
  }

  void WriteAll() {
    struct Ended {
      bool& writing;
      ~Ended() { writing = false; }
    } const ended{writing};
    while (!lines.empty()) {
      const Line block = TakeBlock();
      const auto written =
          lane.Run([&files = environment.files, block] { return AppendTo(files, block.path, block.text); },
                   kFileWorkLimit);
      if (!written) return NoteHang(block.path);
      Note(written->Reason());
    }
  }

  // Lines of one file that follow each other are written together.
  Line TakeBlock() {
    Line block{lines.front().path, {}};
    while (!lines.empty() && lines.front().path == block.path) {
      block.text += lines.front().text;
      lines.pop_front();
    }
    return block;
  }

  void NoteHang(const std::string& path) {
    Note("'" + path + "' does not answer; what is sent is not logged");
    lane.WhenBack([self = weak_from_this()] {
      if (const auto state = self.lock()) state->Start();
    });
  }

  // A log that stays broken is worth one line, not one a text.
  void Note(const std::string& problem) {
    if (!problem.empty()) DebugLine(problem);
    if (problem != last && !problem.empty()) environment.person.Note(problem);
    if (problem.empty() && leftOut > 0)
      environment.person.Note(std::to_string(std::exchange(leftOut, 0)) +
                              " lines are missing in a log of what was sent");
    last = problem;
  }

  Environment& environment;
  WorkLane lane;
  std::deque<Line> lines;
  std::string last;  // the last problem; "" since a later success
  std::size_t leftOut = 0;
  bool writing = false;
};

WireLog::WireLog(Environment& environment) : state_(std::make_shared<State>(environment)) {}

void WireLog::Append(const ServiceSnapshot& snapshot, std::string_view suffix, std::string_view text) {
  state_->Add({PathOf(state_->environment, snapshot, suffix), std::string(text) + kWireLogLineEnd});
}

}  // namespace zeb
