// The operating system's part in start-up and shut-down beyond the loader's
// notifications (elf_entry.cpp, win_entry.cpp): the library-release call made
// at process detach.
#pragma once

namespace tqcs {

// Releases a module handle through the platform's library-release call
// (FreeLibrary, dlclose); null is left alone.
void ReleaseModule(void *handle);

}  // namespace tqcs
