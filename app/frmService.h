// frmService: a service's window without the drawing: it owns the service, its intake, its control link and
// its timers, gives each output its control, and decides when to update.
//
// Owned by frmMain through shared_ptr; its tasks hold it too, so closing it while an update waits is safe.
// What it shows (panels, item list, outputs) it keeps as plain values that a desktop window draws.
//
// One thing at a time is done with the outputs as a whole: starting them, an update, or a restart after
// settings changed. What falls due meanwhile is done afterwards. Cues (near end, travel flag) do not wait for
// that; the service keeps them and updates of the same output type apart.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "core/clsZEBService.h"
#include "sources/ControlLink.h"
#include "sources/ItemIntake.h"
#include "sources/uNetControlServer.h"

namespace zeb {

class frmService : public std::enable_shared_from_this<frmService>,
                   private IntakeWindow,
                   private ServiceEvents {
 public:
  // Creates the window; call Open next.
  static std::shared_ptr<frmService> Create(Environment& environment, OutputFactory makeOutput);
  ~frmService() override;

  // Loads service `number`, starts its outputs and opens its information source.
  void Open(int number);
  // Reads the settings again and restarts what changed, keeping the items. For SIGHUP.
  void Reload();
  // Stops the source, the timers and the outputs. An update in progress finishes by itself first.
  void Close();
  bool Closed() const;

  clsZEBService& service();
  const std::string& PanelText(Panel panel) const;
  bool PanelVisible(Panel panel) const;  // the bounce panel only while the service relays
  // Goes up when the items shown have changed, so that a window knows when to draw them anew.
  int ItemListVersion() const;
  void ForceUpdate();  // the force-update button
  // Feeds a message in as if the controller had sent it.
  void SetZEBInformation(std::string_view message);

 private:
  frmService(Environment& environment, OutputFactory makeOutput);
  struct State;
  std::unique_ptr<State> state_;

  uNetControlServer::Events ServerEvents();
  std::shared_ptr<Control> MakeControl(OutputType type);
  // Runs `work` in a task that keeps the window alive.
  void StartTask(const std::string& name, std::function<void()> work);
  // tmrUpdateOutputs.
  void Tick();
  void ArmDelayedUpdate();
  void UpdateOutputs(bool full);
  void RunUpdate(bool full);
  void StartOutputs();
  // Opens, keeps or closes the information source, as the settings say.
  void OpenSource();
  void Listen();
  void RunReload();

  void SetPanel(Panel panel, const std::string& text) override;
  void RefreshItemList() override;
  void UpdateOutputsNow() override;
  bool UpdateRunning() const override;
  void InformationReceived() override;
  void SendTravelFlag(bool active) override;
  void SendNearEnd();
  void OutputUpdateFinished(int index, OutputType type) override;
};

}  // namespace zeb
