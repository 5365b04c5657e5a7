/*
 * The page of a session: one HTML file that needs nothing but a browser.
 */
#pragma once

#include <string>

#include "report/Summary.h"
#include "report/page/PageRecorder.h"

namespace desk {

// Names in the session are data on the page, never markup.
std::string formatPage(const Summary& summary, const PageRecorder& recorder);

}  // namespace desk
