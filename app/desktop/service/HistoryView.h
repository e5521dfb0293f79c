// HistoryView: what was on air and what each output showed, the last rows of it, read by a worker while the
// page is seen; and of the chosen publication, why it said that.
#pragma once

#include <QWidget>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "app/desktop/Desk.h"
#include "app/desktop/service/GridModel.h"
#include "app/desktop/service/HistoryFeed.h"
#include "platform/Epoch.h"
#include "status/StationState.h"

class QComboBox;
class QLabel;
class QPlainTextEdit;

namespace zeb {

class GridView;

class HistoryView : public QWidget {
 public:
  explicit HistoryView(Desk& desk, QWidget* parent = nullptr);
  // Called now and then while the page is seen. `version` goes up with each change of the service: the store
  // is read when that was a moment ago, since what has happened is written a little later.
  void Draw(const StationState& state, std::uint64_t version);

 private:
  void OfferOutputs(const StationState& state);
  void BeginAnew();
  void Read();
  void Take(HistoryPiece piece);
  void ShowChosen();
  void Explain(const HistoryRow& row);

  Desk& desk_;
  GridModel model_;
  GridView* grid_;
  QComboBox* output_;
  QLabel* note_;
  QPlainTextEdit* why_;
  int service_ = 0;
  std::int64_t from_ = 0;                               // UTC milliseconds
  HistoryPlace items_, publications_;                   // read so far
  std::unordered_map<std::uint64_t, HistoryRow> rows_;  // by the keys of the grid's
  std::uint64_t lastKey_ = 0;
  std::optional<std::uint64_t> version_;
  MonotonicTime nextRead_{}, readUntil_{};
  bool busy_ = false;  // a worker reads, or hangs
  bool explaining_ = false;
  Epoch question_;  // another service or output: what is being read is of no use
  Epoch epoch_;
};

}  // namespace zeb
