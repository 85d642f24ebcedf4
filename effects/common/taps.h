#pragma once

namespace kelmora {

/// The most taps that a kernel is made for whose length a knob gives; a knob far outside its range asks for more than
/// any memory holds.
inline constexpr int kMostTaps = 32767;

} // namespace kelmora
