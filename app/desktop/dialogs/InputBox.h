// InputBox: asks for one line of text, or for one of a few words.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/desktop/Desk.h"

namespace zeb {

struct InputBox {
  std::string title, caption;        // English; the caption with its mnemonic
  std::string name = "Input";        // the field's object name
  std::string text;                  // what is in it at first
  std::vector<std::string> choices;  // not empty: one of these is chosen; they are shown translated
  // What is wrong with the text, shown in a box while the input stays open; "" when it may be taken.
  std::function<std::string(const std::string& text)> check;
};

// `accepted` gets the text that OK leaves, or the choice as it was given.
void OpenInputBox(Desk& desk, QWidget* parent, const InputBox& box,
                  std::function<void(const std::string& text)> accepted);

}  // namespace zeb
