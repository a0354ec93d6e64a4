// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <mutex>

#include "Host/Util/Api.h"

/// What programs rely on that fork and go on, as interpreters do: the new process has of all threads the one that
/// forked.
namespace ScEng {

/// Has the mutex taken while the process forks, so that the new one does not find it held by a thread that it lacks.
/// It stays to the end of the process. Mutexes are taken in the order of these calls: one that is locked while another
/// one is held comes after that.
HOST_UTIL_API void HoldWhileForking(std::mutex& mutex);

/// Has the function called in each process that is forked, on its one thread, when the mutexes are free: for what is
/// counted over all threads. It stays to the end of the process. Must not throw.
HOST_UTIL_API void CallInForks(std::function<void()> function);

/// Says that there are threads for the work of this process from now on.
HOST_UTIL_API void NoteWorkers();

/// Whether this process was forked from one with such threads. They are gone, and what they held stays held: the work
/// is done on the thread that asks for it.
HOST_UTIL_API bool HasLostWorkers();

}  // namespace ScEng
