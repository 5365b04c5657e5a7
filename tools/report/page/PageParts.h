/*
 * The files of the page that do not depend on the session, embedded when the tool is built.
 */
#pragma once

#include <string_view>

namespace desk {

extern const std::string_view kPageTemplate;
extern const std::string_view kPageStyle;
extern const std::string_view kPageScript;
extern const std::string_view kPageCharts;  // Chart.js

}  // namespace desk
