#pragma once

namespace kelmora::platform {

/// Keeps the handle of the DLL that this code is part of, for OwnModulePath. Called by the attach hook; in a
/// file without the hook, a program, the path is the program's.
void RememberOwnModule(void* handle);

} // namespace kelmora::platform
