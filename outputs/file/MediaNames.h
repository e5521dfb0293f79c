// MediaNames: under which names the pictures and other files of items may arrive beside the pages. The names
// come from whoever sends the items, so none may be an order to a web server, stand for another file, or be
// that of a page on its way.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

// Why a plain name is not used, in words that follow "it is not published: "; "" when it may be. What a
// percent code in it stands for is looked at too, since servers differ in what they make of one.
std::string WhyNoMediaName(std::string_view name);

// Whether a web server would hand such a file out as a page or a part of one, or run it: one of the name's
// endings is .htm, .html, .php, .asp, .jsp, .js, .css or one of their kin ("index.html.en", too).
bool IsPageName(std::string_view name);

// Whether the name ends as those of the pictures do that IsPicture (MediaRules.h) knows.
bool IsPictureName(std::string_view name);

}  // namespace zeb
