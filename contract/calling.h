#pragma once

// How functions cross the boundary between the library and its host.
//
// A host is built by another compiler than the library. What both agree on is the plain form that
// every compiler lays out alike: a table of function pointers in the order of declaration. So an
// interface is a struct of pure virtual functions and nothing else: no virtual destructor (compilers
// differ in how many slots one takes), no overloads (compilers differ in their order), no record
// returned by value (compilers differ in where the hidden pointer goes).

#if defined(_WIN32) && !defined(_WIN64)
/// Stands on every interface function: the callee clears the stack, `this` is the first argument on it.
#define KELMORA_CALL __stdcall
/// Stands on the slots that take the place of a deleting destructor: `this` in a register.
#define KELMORA_DESTRUCTOR_CALL __thiscall
#else
#define KELMORA_CALL
#define KELMORA_DESTRUCTOR_CALL
#endif

/// Bit 0 of the flags of a deleting-destructor slot: free the object's memory as well.
#define KELMORA_DESTROY_FREE 1u
