// frmService: a service's window without the drawing: it owns the service, its intake, its control link and
// its timers, gives each output its control, and decides when to update.
//
// Owned by frmMain through shared_ptr. What it shows (panels, item list, outputs) it keeps as plain values
// that a desktop window draws. Its outputs run each for itself: nothing here waits for one of them, except
// closing, which waits for a few seconds at most.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "core/clsZEBService.h"
#include "history/HistoryRecorder.h"
#include "sources/ControlLink.h"
#include "sources/ItemIntake.h"
#include "sources/uNetControlServer.h"
#include "status/StationBoard.h"

namespace zeb {

class frmService : public std::enable_shared_from_this<frmService>,
                   private IntakeWindow,
                   private ServiceEvents {
 public:
  // Creates the window; call Open next.
  // `history` keeps what it does; null: nothing is kept.
  static std::shared_ptr<frmService> Create(Environment& environment, OutputFactory makeOutput,
                                            std::shared_ptr<HistoryRecorder> history = nullptr);
  ~frmService() override;

  // Loads service `number`, starts its outputs and opens its information source; neither where only settings
  // are edited (Environment::publishes).
  void Open(int number);
  // Reads the settings again and restarts the outputs whose settings changed, keeping the items. For SIGHUP.
  // When they cannot be read, everything goes on as it is, and the reason says so.
  Outcome Reload();
  // Stops the source, the timers and the outputs. What is under way may end by itself for two seconds, and is
  // then given up; a travel flag that is on is ended first.
  void Close();
  bool IsOpen() const;
  bool Closed() const;

  clsZEBService& service();
  const std::string& PanelText(Panel panel) const;
  bool PanelVisible(Panel panel) const;  // the bounce panel only while the service relays
  // Goes up when the items shown have changed, so that a window knows when to draw them anew.
  int ItemListVersion() const;
  // One picture of all that is to be seen; what front ends read.
  const StationBoard& Board() const;
  StationBoard& Board();
  void ForceUpdate();  // the force-update button
  // Feeds a message in as if the controller had sent it.
  void SetZEBInformation(std::string_view message);

 private:
  frmService(Environment& environment, OutputFactory makeOutput, std::shared_ptr<HistoryRecorder> history);
  struct State;
  std::unique_ptr<State> state_;

  uNetControlServer::Events ServerEvents();
  StationBoard::Window BoardWindow();
  SourceState SourceNow() const;
  std::string SourceText() const;
  void StartOutput(OutputType type, int index);
  // tmrUpdateOutputs.
  void Tick();
  void UpdateOutputs(bool full);
  void ShowUpdateState();
  // Opens, keeps or closes the information source, as the settings say.
  void OpenSource();
  void Listen();
  void NoteWithoutSource();
  void RememberTravelFlag();
  void StoreTravelFlag(bool active);
  void SendNearEnd();

  void SetPanel(Panel panel, const std::string& text) override;
  void RefreshItemList() override;
  void UpdateOutputsNow() override;
  bool UpdateRunning() const override;
  void InformationReceived() override;
  void SendTravelFlag(bool active) override;
  void OutputStarted(int index, OutputType type) override;
  void OutputUpdateStarting(int index, OutputType type) override;
  void OutputRunEnded(const UpdateRecord& record, const UpdateRun& run) override;
  void OutputUpdateFinished(int index, OutputType type) override;
  void UpdateFinished() override;
  void UpdateThrough(const UpdateRecord& record) override;
  void UpdateWaits(const UpdateRecord& record) override;
};

}  // namespace zeb
