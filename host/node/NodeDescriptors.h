/*
 * The descriptors that stand for the control node, and what its users do with them. Each is a real
 * descriptor of /dev/null, or of the kernel's node, so its number is taken, can be duplicated and
 * is inherited by a fork.
 *
 * Everything keeps errno unless it fails. Any thread may call, also while other threads close what
 * it uses. In the child of a vfork, which runs in its parent's memory, the calls that close or
 * duplicate leave the parent's descriptors alone.
 */
#pragma once

namespace desk {

bool isNodePath(const char* path);

// Whether the model has to answer for this number: it stands for the node, or did, and nobody has
// taken it since.
bool isNodeDescriptor(int descriptor);

// As the system calls: -1 with errno on failure.
int openNode(int flags);
int commandNode(int descriptor, unsigned long request, const void* record);
int closeNode(int descriptor);

// The kernel has made `copy` a duplicate of `descriptor`, or just opened it (descriptor -1).
void noteDescriptor(int descriptor, int copy);
// The kernel has closed the numbers from `first` to `last`.
void noteClosed(unsigned first, unsigned last);

}  // namespace desk
