// FieldWidgets: one widget for each kind of a sheet's fields. Gives what is in it as the text that is stored,
// and the stored text itself as long as nobody has changed it, whatever the widget could not show of it.
//
// Owned by the property dialog; the Qt widgets belong to their parent.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/desktop/dialogs/Dialogs.h"
#include "core/PropertySheet.h"

namespace zeb {

class FieldWidget {
 public:
  virtual ~FieldWidget() = default;

  virtual QWidget* Whole() = 0;                 // what stands in the form
  virtual QWidget* Input() { return Whole(); }  // what takes the keys
  virtual void SetText(const std::string& text) = 0;
  // For a list: what can be chosen, in the place of what could.
  virtual void Offer(const std::vector<PropertyChoice>& /*choices*/) {}

  // For a file: the chooser's title and filters, in the place of what they were.
  virtual void SetChooser(const std::string& /*title*/, const std::string& /*filters*/) {}

  // What is entered.
  std::string Text() const;
  // Shows the stored text.
  void Begin(const std::string& stored);

  std::function<void()> onChanged;

 protected:
  virtual std::string Entered() const = 0;
  void Changed() const;

 private:
  std::string stored_, shown_;
};

// `window` gives templates something to show; may be null. Not for kPairs and kNote.
std::unique_ptr<FieldWidget> MakeFieldWidget(Desk& desk, const ServicePtr& window,
                                             const PropertyField& field);

}  // namespace zeb
