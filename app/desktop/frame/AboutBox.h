// AboutBox: which version this is, and on what it works.
#pragma once

class QWidget;

namespace zeb {

struct Desk;

void OpenAboutBox(const Desk& desk, QWidget* parent);

}  // namespace zeb
