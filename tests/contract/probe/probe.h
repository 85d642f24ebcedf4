#pragma once

// What the test program and the probe say to each other. Two compilers with different binary interfaces read
// this file: C functions, plain records, no headers.

namespace kelmora_probe {

using Word = __UINTPTR_TYPE__;

/// One call that the probe made or answered.
struct Call {
    const char* what;  ///< "IVideoEffect::Render"
    Word result;       ///< what the callee gave (calls made); 0 for calls answered
    Word arguments[7]; ///< what the caller gave (calls answered); zeros for calls made
    int argumentCount;
    int stackShift; ///< bytes by which the callee left the stack off balance (calls made)
};

struct Report {
    Call calls[128];
    int count;
};

/// Argument number `argument` of the call of slot `slot`: each is another word. Pointers fill all of their
/// bits; nobody follows them.
constexpr unsigned Number(unsigned slot, unsigned argument)
{
    return 0x80000000u | (argument + 1) << 16 | 0x5A00u | slot;
}
constexpr Word Pointer(unsigned slot, unsigned argument)
{
    return (static_cast<Word>(sizeof(Word) > 4 ? 0x0077C0DEu : 0u) << (sizeof(Word) * 4))
        | Number(slot, argument);
}

/// What a dummy gives back from slot `slot`.
constexpr unsigned NumberBack(unsigned slot)
{
    return 0xB00B0000u | slot;
}
constexpr Word PointerBack(unsigned slot)
{
    return Pointer(slot, 0x70);
}

/// The interfaces that the probe can walk.
enum Interface {
    WalkUnknown,
    WalkEffectLibrary,
    WalkVideoEffect,
    WalkVideoHost,
    WalkParamToolTip,
    WalkMemoryProvider,
    WalkFrameProcessor,
    WalkPresetSaver,
    WalkMultiLingual,
};

/// One walk over every slot of an object's table.
struct Walk {
    Interface which;
    void* object;
    Report* report;
};

/// A host's whole visit to a library: everything that it may ask, one frame rendered, everything released.
struct Visit {
    void* getEffectsLibrary; ///< the export
    int effectId;
    void* firstPicture; ///< VideoFrame
    void* secondPicture;
    void* output;
    void* info; ///< RenderInfo

    // For the toolbox, VideoFrames; null for no work with it.
    void* large;  ///< PF_BGRA8, of the first picture's size
    void* small;  ///< PF_BGRA8, smaller
    void* packed; ///< two bytes per pixel, of the first picture's size
    void* floats; ///< PF_ARGB32F

    Report* report;

    // What the probe counted meanwhile.
    int knobs;          ///< that the effect described
    int presets;        ///< likewise
    int knobsAsked;     ///< calls of GetParamValue
    int knobsOffTable;  ///< those with a number that the effect did not describe
    int blocksGiven;    ///< memory that the host gave
    int blocksRefused;  ///< for want of room
    int blocksOpen;     ///< not given back at the end of the render
    int hostReferences; ///< left at the end of the render, 0 when all came back
    int memoryReferences;
};

} // namespace kelmora_probe

extern "C" {

/// 1 when the probe has the binary interface of Microsoft's 32-bit compilers, else 0.
int KelmoraProbeIsMicrosoft();

/// Calls each slot of `walk->object` once, in order, with the arguments above. The slots that take the place
/// of a deleting destructor are called twice: with the flag to free and without.
void KelmoraProbeWalk(kelmora_probe::Walk* walk);

/// A host and an allocator of the probe's own. They write each call into `*report` and answer it with
/// NumberBack, PointerBack and `answer`. On 32-bit Windows the upper bytes of a bool are garbage.
void* KelmoraProbeHost(kelmora_probe::Report* report, int answer);
void* KelmoraProbeMemory(kelmora_probe::Report* report, int answer);

/// Makes the visit. `report` gets a line for each call; a walk upward that ends shows its last answer too.
void KelmoraProbeVisit(kelmora_probe::Visit* visit);
}
