// The texts of windows in the chosen language. The engine's texts are English; they are translated where they
// are drawn, and nowhere else, so that the journal and the settings stay as they are.
#pragma once

#include <QString>
#include <string_view>

namespace zeb {

// The text in the chosen language; as it is when the language has no other for it.
QString T(std::string_view english);

}  // namespace zeb
