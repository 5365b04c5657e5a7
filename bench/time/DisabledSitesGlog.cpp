#include <glog/logging.h>

#include "time/DisabledSites.h"

int bench::glogSites() {
    return repeatSite([](int i) { VLOG(1) << "site: " << i; });
}
