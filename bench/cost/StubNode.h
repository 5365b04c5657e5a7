/*
 * Stands in for the system calls that a notification makes: a control node that takes every record,
 * and a thread id that can be chosen, so that one thread can stand for many. No call reaches the
 * kernel.
 */
#pragma once

namespace bench {

void setThread(int tid);

}  // namespace bench
