#include <android-base/logging.h>

#include "time/DisabledSites.h"

int bench::libbaseSites() {
    return repeatSite([](int i) { LOG(DEBUG) << "site: " << i; });
}
