#pragma once

// The boundary as the author of a Windows host writes it down: his compiler's idea of virtual functions,
// destructors in their slots, records returned by value. Nothing here comes from contract/, so that a slip
// there has nothing to agree with.

namespace kelmora_probe {

struct Id {
    unsigned char bytes[16];
};

struct VideoFrame;
struct RenderInfo;
struct PresetData;

/// A rectangle of pixels; right and bottom belong to it.
struct Rect {
    int left;
    int top;
    int right;
    int bottom;
};

struct ParamInfo {
    unsigned value;
    unsigned valueY;
    unsigned kind;
    unsigned char rest[264];
};

struct ParamValue {
    unsigned value;
    unsigned valueY;
    unsigned kind;
};

struct HostInfo {
    const char* name;
    unsigned words[3];
};

/// A bool argument or result as it travels: only the low byte means something.
using Bool = unsigned;

struct IUnknown {
    virtual long __stdcall QueryInterface(const Id* id, void** out) = 0;
    virtual unsigned __stdcall AddRef() = 0;
    virtual unsigned __stdcall Release() = 0;
};

struct IVideoHost : IUnknown {
    virtual Bool __stdcall GetParamValue(unsigned knob, ParamValue* out, unsigned kind) = 0;
    virtual Bool __stdcall HostReserved4(unsigned first, unsigned second, Bool third) = 0;
    virtual unsigned __stdcall HostReserved5(unsigned first, unsigned second) = 0;
    virtual Bool __stdcall HostReserved6(unsigned first, unsigned second) = 0;
    virtual void __stdcall HostReserved7(unsigned first, unsigned second) = 0;
    virtual HostInfo __stdcall GetHostInfo() = 0;
};

struct IVideoEffect : IUnknown {
    virtual const char* __stdcall GetName() = 0;
    virtual unsigned __stdcall GetHelpId() = 0;
    virtual bool __stdcall GetParamInfo(unsigned knob, ParamInfo* info) = 0;
    virtual bool __stdcall Render(IVideoHost* host, VideoFrame* first, VideoFrame* second, VideoFrame* output,
                                  RenderInfo* info) = 0;
    virtual const char* __stdcall GetPresetName(unsigned preset) = 0;
    virtual bool __stdcall GetPresetValue(unsigned preset, unsigned knob, ParamValue* out) = 0;
};

struct IParamToolTip : IUnknown {
    virtual const char* __stdcall GetToolTip(unsigned knob) = 0;
};

struct IMemoryProvider : IUnknown {
    virtual Bool __stdcall Alloc(void** out, unsigned bytes) = 0;
    virtual void __stdcall Free(void* memory) = 0;
    virtual Bool __stdcall AllocImage(void** out, int width, int height, int pixelBytes, int* stride) = 0;
    virtual void __stdcall FreeImage(void* memory) = 0;
};

struct IFrameProcessor : IUnknown {
    virtual bool __stdcall Copy(const VideoFrame* src, VideoFrame* dst) = 0;
    virtual bool __stdcall Resize(const VideoFrame* src, VideoFrame* dst, int quality) = 0;
    virtual bool __stdcall ReverseChannels(const VideoFrame* src, VideoFrame* dst) = 0;
    virtual bool __stdcall YCbCr422ToBGRA(const VideoFrame* src, VideoFrame* dst, int alpha,
                                          int reserved) = 0;
    virtual bool __stdcall BGRAToYCbCr422(const VideoFrame* src, VideoFrame* dst, int reserved) = 0;
    virtual bool __stdcall SetChannel(VideoFrame* frame, int channel, int value) = 0;
    virtual bool __stdcall AlphaOver(VideoFrame* out, const VideoFrame* a, const VideoFrame* b,
                                     Bool premultiplied) = 0;
    virtual bool __stdcall PermuteChannels(VideoFrame* frame, const int* order) = 0;
    virtual bool __stdcall Premultiply(VideoFrame* frame) = 0;
    virtual bool __stdcall YCbCrToARGB(const VideoFrame* src, VideoFrame* dst) = 0;
    virtual bool __stdcall ARGBToYCbCr(const VideoFrame* src, VideoFrame* dst) = 0;
    virtual bool __stdcall FlipVertical(VideoFrame* frame) = 0;
    virtual bool __stdcall FlipVerticalTo(const VideoFrame* src, VideoFrame* dst) = 0;
    virtual ~IFrameProcessor();
    virtual bool __stdcall ResizeRegion(const VideoFrame* src, const Rect* region, VideoFrame* dst,
                                        int quality) = 0;
};

struct IEffectLibrary;

struct IPresetSaver : IUnknown {
    virtual int __stdcall LoadPreset(void* parent, IEffectLibrary* library, int effectId, PresetData* preset,
                                     const char* languageCode) = 0;
    virtual int __stdcall SavePreset(void* parent, IEffectLibrary* library, int effectId, PresetData* preset,
                                     const char* languageCode) = 0;
    virtual ~IPresetSaver();
};

struct IEffectLibrary : IUnknown {
    virtual const char* __stdcall GetName() = 0;
    virtual IVideoEffect* __stdcall CreateEffect(int effectId) = 0;
    virtual void __stdcall ShowHelp(void* parent, unsigned topic) = 0;
    virtual void* __stdcall LibraryReserved() = 0;
    virtual IFrameProcessor* __stdcall CreateFrameProcessor() = 0;
    virtual IPresetSaver* __stdcall CreatePresetSaver() = 0;
};

struct IMultiLingual : IUnknown {
    virtual unsigned __stdcall GetTextEx(unsigned a, unsigned b, unsigned c, unsigned d, unsigned e,
                                         unsigned f, unsigned g) = 0;
    virtual unsigned __stdcall GetText(const char* languageCode, unsigned section, const char* key,
                                       wchar_t* buffer, unsigned capacity) = 0;
};

} // namespace kelmora_probe
