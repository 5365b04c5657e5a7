/*
 * Log statements and trace sections that are switched off, kDisabledSites of them in a row each.
 * One file a library, because their macros have the same names.
 */
#pragma once

namespace bench {

inline constexpr int kDisabledSites = 100;

int loopAlone();
int velkLogSites();
int velkGatedLogSites();
int spdlogSites();
int glogSites();
int libbaseSites();
int velkTraceSections();
int cutilsTraceSections();

// Keeps the compiler from looking at a switch once for all rounds of a loop.
template <typename Site>
int repeatSite(Site site) {
    for (int i = 0; i < kDisabledSites; ++i) {
        site(i);
        asm volatile("" ::: "memory");
    }
    return 0;
}

}  // namespace bench
