/*
 * The page of a session: one HTML file that needs nothing but a browser.
 */
#pragma once

#include <string>

#include "report/Summary.h"
#include "report/page/PageRecorder.h"

namespace desk {

// Whatever the session names anything is data in it, never markup.
std::string formatPage(const Summary& summary, const PageRecorder& recorder);

}  // namespace desk
