#pragma once

#include <string>

namespace kelmora::platform {

/// A loaded module: a DLL, a shared object. Unloads it when destroyed, unless Detach came first.
///
/// Moves, and does not copy. As large as the system's own handle.
class Module {
public:
    /// No module.
    Module() = default;
    Module(Module&& other) noexcept;
    Module& operator=(Module&& other) noexcept;
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    ~Module();

    /// Loads the file at `path`, UTF-8 on every system; a relative path starts at the current folder, and
    /// no other folder is searched for it. Gives no module on failure, and then, where `error` is not
    /// null, the system's reason in `*error`, one line of UTF-8.
    static Module LoadFile(const char* path, std::string* error = nullptr);

    /// Loads the file at the full path `path`, zero-ended. No module on failure. Throws nothing.
    static Module LoadFile(const char16_t* path) noexcept;

    /// Loads the module of the bare name `name`, zero-ended, from where the system keeps modules. The
    /// current folder is not one of these places. No module on failure. Throws nothing.
    static Module LoadByName(const char16_t* name) noexcept;

    /// Whether there is a module.
    explicit operator bool() const { return m_handle != nullptr; }

    /// The address of what the module exports as `name`; null when it does not, or without a module.
    void* Symbol(const char* name) const;

    /// The same for a function, as a pointer of type `Function`.
    template <class Function>
    Function FunctionNamed(const char* name) const
    {
        return reinterpret_cast<Function>(Symbol(name));
    }

    /// Forgets the module and leaves it loaded.
    void Detach() { m_handle = nullptr; }

    /// Unloads the module now.
    void Unload();

private:
    explicit Module(void* handle) : m_handle(handle) {}

    void* m_handle = nullptr;
};

static_assert(sizeof(Module) == sizeof(void*));

} // namespace kelmora::platform
