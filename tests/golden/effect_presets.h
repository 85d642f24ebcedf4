#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kelmora {

/// A factory preset, typed in by hand: what the tables of the effects are compared with. A colour stands as
/// its number, 0x00BBGGRR, which a float holds exactly, and so do a choice and a check box.
struct PresetRow {
    const char* name;
    float values[11]; ///< of the knobs in their order, as many as there are
};

/// What an inner effect reads for one of its knobs behind the wrapper.
struct AnswerRow {
    int hostKnob; ///< below 0: `fixed`
    float fixed = 0.0f;
};

// clang-format off

/// "Spray" and "Edge". The wrapper has the same.
inline constexpr PresetRow kAirBrushPresets[] = {
    {"Air Brushed", {0.39f, 1.0f}},
    {"Dream", {0.51f, 0.27f}},
    {"Fog", {0.81f, 0.0f}},
    {"Out Of Focus", {0.395f, 0.15f}},
    {"Reset To None", {0.0f, 0.0f}},
    {"Touch Up", {0.04f, 0.57f}},
};
inline constexpr AnswerRow kAirBrushAnswers[] = {{0}, {1}};

/// "Definition" and "Strength".
inline constexpr PresetRow kDetailEnhancerPresets[] = {
    {"Contrast", {0.1f, 1.0f}},
    {"Intense", {0.885f, 1.0f}},
    {"Reset to None", {0.0f, 0.0f}},
    {"Sharpen", {0.085f, 0.455f}},
    {"Stark", {0.17f, 1.0f}},
    {"Strong", {0.755f, 0.465f}},
};

/// "Strength" alone.
inline constexpr PresetRow kWrapDetailEnhancerPresets[] = {
    {"Mild", {0.455f}},
    {"Reset to None", {0.0f}},
    {"Strong", {0.98f}},
    {"Subtle", {0.155f}},
};
inline constexpr AnswerRow kDetailEnhancerAnswers[] = {{-1, 0.065f}, {0}};

/// "Color Shift", "Color", "Brightness", "Contrast", "Brush Width", "Blend".
inline constexpr PresetRow kWaterColorPresets[] = {
    {"Accurate", {0.5001f, 0.4301f, 0.5001f, 0.5001f, 0.3851f, 0.695f}},
    {"Bright Colors", {0.5001f, 1.0f, 0.5001f, 0.5001f, 0.5251f, 0.695f}},
    {"Burnt", {0.0f, 0.23f, 0.285f, 1.0f, 0.53f, 0.5f}},
    {"Flowing Paint", {0.5001f, 0.98f, 0.5001f, 0.5001f, 1.0f, 1.0f}},
    {"Fun Day Out", {0.475728f, 0.92233f, 0.5001f, 0.504854f, 0.116505f, 0.626214f}},
    {"Glow in the Dark", {0.5001f, 0.715f, 0.17f, 1.0f, 0.32f, 1.0f}},
    {"Painted Photograph", {0.49f, 1.0f, 0.51f, 1.0f, 0.78f, 0.52f}},
    {"Pastels", {0.5001f, 0.715f, 0.37f, 1.0f, 0.575f, 1.0f}},
    {"Posterize", {0.525f, 1.0f, 0.295f, 1.0f, 0.085f, 1.0f}},
    {"Reset to None", {0.5001f, 0.5001f, 0.5001f, 0.5001f, 0.0001f, 0.0001f}},
    {"Smokey", {0.5001f, 0.0f, 0.5001f, 0.5001f, 1.0f, 0.825f}},
};

/// "Color", "Brightness", "Contrast", "Brush Width", "Blend".
inline constexpr PresetRow kWrapWaterColorPresets[] = {
    {"Accurate", {0.4301f, 0.5001f, 0.5001f, 0.3851f, 0.695f}},
    {"Bright Colors", {1.0f, 0.5001f, 0.5001f, 0.5251f, 0.695f}},
    {"Burnt", {0.23f, 0.285f, 1.0f, 0.53f, 0.5f}},
    {"Flowing Paint", {0.98f, 0.5001f, 0.5001f, 1.0f, 1.0f}},
    {"Fun Day Out", {0.92233f, 0.5001f, 0.504854f, 0.116505f, 0.626214f}},
    {"Glow in the Dark", {0.715f, 0.17f, 1.0f, 0.32f, 1.0f}},
    {"Painted Photograph", {1.0f, 0.545f, 1.0f, 0.89f, 0.595f}},
    {"Pastels", {0.715f, 0.44f, 1.0f, 0.575f, 1.0f}},
    {"Posterize", {1.0f, 0.295f, 1.0f, 0.085f, 1.0f}},
    {"Reset to None", {0.5001f, 0.5001f, 0.5001f, 0.0001f, 0.0001f}},
    {"Smokey", {0.0f, 0.5001f, 0.5001f, 1.0f, 0.825f}},
};
inline constexpr AnswerRow kWaterColorAnswers[] = {{-1, 0.5001f}, {0}, {1}, {2}, {3}, {4}};

/// "Soften", "Fog", "Brightness", "Color", "Tempo", "Cross Fade".
inline constexpr PresetRow kColorMeltPresets[] = {
    {"Bright Fog", {0.81f, 1.0f, 0.54f, 0.27f, 0.32f, 0.39f}},
    {"Dark Fog", {0.81f, 1.0f, 0.12f, 0.49f, 0.31f, 0.375f}},
    {"Evening", {0.355f, 0.77f, 0.1f, 0.0f, 0.31f, 0.465f}},
    {"Gentle", {0.5f, 0.23f, 0.57f, 0.49f, 0.31f, 0.48f}},
    {"Hallucination", {0.0f, 1.0f, 0.74f, 1.0f, 0.15f, 0.45f}},
    {"Ooze", {0.38f, 0.68f, 0.51f, 1.0f, 0.31f, 0.5f}},
    {"Radiation", {0.75f, 1.0f, 1.0f, 0.0f, 0.6f, 0.54f}},
    {"Reset to None", {0.0f, 0.0f, 1.0f, 0.0f, 0.15f, 0.45f}},
    {"Vivid Dream", {0.0f, 0.0f, 0.595f, 1.0f, 0.315f, 0.5f}},
};

/// "Soften", "Fog", "Brightness", "Color".
inline constexpr PresetRow kWrapColorMeltPresets[] = {
    {"Bright Fog", {0.81f, 1.0f, 0.54f, 0.27f}},
    {"Dark Fog", {0.81f, 1.0f, 0.12f, 0.49f}},
    {"Gentle", {0.5f, 0.23f, 0.57f, 0.49f}},
    {"Ghosts", {0.355f, 0.77f, 0.1f, 0.0f}},
    {"Hallucination", {0.0f, 1.0f, 1.0f, 1.0f}},
    {"Ooze", {0.405f, 0.835f, 0.51f, 1.0f}},
    {"Psycho Bloom", {1.0f, 1.0f, 1.0f, 1.0f}},
    {"Vivid Dream", {0.0f, 0.0f, 0.595f, 1.0f}},
    {"White Wash", {0.75f, 1.0f, 1.0f, 0.0f}},
};
inline constexpr AnswerRow kColorMeltAnswers[] = {{0}, {1}, {2}, {3}, {-1, 0.675f}, {-1, 0.63f}};

/// "Rounding", "Layers", "Balance", "Foreground", "Background", "Blend Colors", "Shadow", "Angle", "Tempo",
/// "Cross Fade".
inline constexpr PresetRow kPaperCollagePresets[] = {
    {"Black and White", {0.125f, 0.005f, 0.5f, 0xFFFFFF, 0x000000, 0.0f, 0.0f, 0.0f, 0.415f, 0.805f}},
    {"Blue", {0.275f, 0.295f, 0.5001f, 0xFF8000, 0xFF0000, 0.5651f, 0.6f, 0.15f, 0.69f, 0.89f}},
    {"Chill", {0.33f, 0.575f, 0.5001f, 0xFCF986, 0xFF6800, 0.1051f, 0.0f, 0.15f, 0.435f, 0.89f}},
    {"Curvey Cuts", {1.0f, 0.61f, 0.5001f, 0x43FEFF, 0x5B4639, 1.0f, 1.0f, 0.15f, 1.0f, 1.0f}},
    {"Dark", {0.35f, 1.0f, 0.81f, 0xC08000, 0x00376F, 0.14f, 0.635f, 0.175f, 0.635f, 0.79f}},
    {"Etched", {0.0f, 1.0f, 0.5001f, 0xA8D3FF, 0x5B4639, 0.4201f, 0.225f, 0.635f, 0.715f, 0.745f}},
    {"Heat", {0.33f, 1.0f, 0.5001f, 0x47FDFE, 0x0000FF, 0.1051f, 0.0f, 0.15f, 0.215f, 0.685f}},
    {"Ice", {0.0f, 0.795f, 0.435f, 0xFFFF82, 0xFFFFFF, 0.0f, 0.575f, 0.635f, 0.515f, 0.835f}},
    {"Negative", {0.435f, 0.85f, 0.5001f, 0x000000, 0xFFFFFF, 0.0f, 0.58f, 0.17f, 0.0f, 0.615f}},
    {"Ooze", {1.0f, 0.0f, 0.5001f, 0x43FEFF, 0x5B4639, 1.0001f, 1.0f, 0.15f, 0.64f, 0.82f}},
    {"Red", {0.275f, 0.225f, 0.5001f, 0x0000FF, 0x0000FF, 0.2301f, 0.6f, 0.15f, 0.445f, 0.67f}},
    {"Topagraphic Map", {0.43f, 1.0f, 0.5f, 0xFFFF82, 0x000071, 0.0f, 0.465f, 0.21f, 0.83f, 0.755f}},
    {"Yellow", {0.275f, 0.225f, 0.5001f, 0x47FDFE, 0x00FFFF, 0.2251f, 0.6f, 0.15f, 0.335f, 0.89f}},
};

/// "Rounding", "Layers", "Shadow", "Angle", "Foreground", "Background", "Blend Colors".
inline constexpr PresetRow kWrapPaperCollagePresets[] = {
    {"Black and White", {0.255f, 0.0f, 0.0f, 0.0f, 0xFFFFFF, 0x000000, 0.0f}},
    {"Blue", {0.275f, 0.295f, 0.6f, 0.15f, 0xFF8000, 0xFF0000, 0.5651f}},
    {"Chill", {0.33f, 0.575f, 0.0f, 0.15f, 0xFCF986, 0xFF6800, 0.1051f}},
    {"Curvey Cuts", {1.0f, 0.61f, 1.0f, 0.15f, 0x43FEFF, 0x5B4639, 1.0f}},
    {"Dark", {0.35f, 1.0f, 0.635f, 0.175f, 0xC08000, 0x00376F, 0.14f}},
    {"Etched", {0.0f, 1.0f, 0.225f, 0.635f, 0xA8D3FF, 0x5B4639, 0.4201f}},
    {"Heat", {0.33f, 1.0f, 0.0f, 0.15f, 0x47FDFE, 0x0000FF, 0.1051f}},
    {"Ice", {0.13f, 0.795f, 0.41f, 0.635f, 0xEAEA00, 0xFFFFFF, 0.0f}},
    {"Negative", {0.275f, 0.85f, 0.215f, 0.17f, 0x121010, 0xF2EEEC, 0.0f}},
    {"Ooze", {1.0f, 0.0f, 1.0f, 0.15f, 0x43FEFF, 0x5B4639, 0.705f}},
    {"Red", {0.275f, 0.225f, 0.6f, 0.15f, 0x0000FF, 0x0000FF, 0.2301f}},
    {"Topographic Map", {0.43f, 1.0f, 0.465f, 0.21f, 0xFFFF82, 0x000071, 0.0f}},
    {"Yellow Lines", {1.0f, 0.71f, 0.33f, 0.15f, 0x47FDFE, 0x00FFFF, 0.0f}},
};
inline constexpr AnswerRow kPaperCollageAnswers[] = {
    {0}, {1}, {-1, 0.495f}, {4}, {5}, {6}, {2}, {3}, {-1, 0.32f}, {-1, 0.725f},
};

/// "Blur", "Angle", "Direction", "Cross Fade", "Background".
inline constexpr PresetRow kSmearPresets[] = {
    {"Bottom Left", {0.28f, 0.377778f, 0.0f, 0.56f, 3}},
    {"Bottom Right", {0.28f, 0.13f, 0.0f, 0.56f, 3}},
    {"Down", {0.43f, 0.25f, 0.0f, 0.7f, 0}},
    {"Horizontal Stretch", {1.0f, 0.0f, 0.5f, 0.795f, 1}},
    {"Left", {0.56f, 0.0f, 1.0f, 0.72f, 3}},
    {"Reset To None", {0.0f, 0.0f, 0.0f, 0.0f, 0}},
    {"Right", {0.56f, 0.0f, 0.0f, 0.72f, 3}},
    {"Top Left", {0.28f, 0.13f, 1.0f, 0.56f, 0}},
    {"Top Right", {0.28f, 0.38f, 1.0f, 0.56f, 0}},
    {"Up", {0.43f, 0.25f, 1.0f, 0.7f, 0}},
    {"Vertical Stretch", {1.0f, 0.25f, 0.5f, 0.795f, 0}},
};

/// "Blur", "Angle", "Direction".
inline constexpr PresetRow kWrapSmearPresets[] = {
    {"Blur Left", {0.875f, 0.0f, 1.0f}},
    {"Blur Right", {1.0f, 0.0f, 0.0f}},
    {"Diagonal Left", {0.28f, 0.13f, 0.48f}},
    {"Diagonal Right", {0.28f, 0.377778f, 0.52f}},
    {"Horizontal Stretch", {1.0f, 0.0f, 0.5f}},
    {"Reset To None", {0.0f, 0.0f, 0.0f}},
    {"Shift Down", {0.345f, 0.25f, 0.0f}},
    {"Shift Left", {0.33f, 0.0f, 1.0f}},
    {"Shift Right", {0.33f, 0.0f, 0.0f}},
    {"Shift Up", {0.37f, 0.25f, 1.0f}},
    {"Top Left", {0.28f, 0.13f, 1.0f}},
    {"Top Right", {0.28f, 0.38f, 1.0f}},
    {"Vertical Stretch", {1.0f, 0.25f, 0.5f}},
};
inline constexpr AnswerRow kSmearAnswers[] = {{0}, {1}, {2}, {-1, 0.595f}, {-1, 3.0f}};

/// "Horizontal", "Vertical", "Rotation", "Crop", "Rate", "Jitter", "Hold", "Blur", "Synchronize Axes".
inline constexpr PresetRow kActiveCameraPresets[] = {
    {"Dirt Road", {0.11f, 0.55f, 0.16f, 0.42f, 1.0f, 0.56f, 0.39f, 0.4f, 0}},
    {"Hand Held", {0.21f, 0.19f, 0.04f, 0.34f, 0.67f, 0.54f, 0.34f, 0.21f, 0}},
    {"Itchy Camera", {0.52f, 0.54f, 0.01f, 0.54f, 0.26f, 0.77f, 0.74f, 0.0f, 1}},
    {"Jack Hammer", {0.08f, 0.615f, 0.0f, 0.45f, 0.9f, 0.91f, 0.26f, 0.4f, 1}},
    {"Jumping Image", {0.71f, 0.73f, 0.0f, 0.59f, 0.26f, 0.0f, 1.0f, 0.47f, 0}},
    {"Large Boat", {0.34f, 0.33f, 0.27f, 0.34f, 0.27f, 0.1f, 0.0f, 0.0f, 0}},
    {"Reset To None", {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0}},
    {"Rocket Ship", {0.0f, 0.54f, 0.0f, 0.3f, 0.82f, 0.89f, 0.26f, 0.73f, 1}},
    {"Seesaw", {0.0f, 0.0f, 1.0f, 0.3036f, 0.565f, 0.075f, 0.0f, 1.0f, 0}},
    {"Stumbling Drunk", {0.4f, 0.38031f, 0.04f, 0.33f, 0.42f, 0.76f, 0.34f, 0.97f, 0}},
    {"Subtle Moves", {0.07f, 0.1f, 0.0f, 0.12f, 0.0f, 0.21f, 0.44f, 0.0f, 1}},
    {"Train Ride", {0.18f, 0.04f, 0.07f, 0.2f, 0.42f, 0.72f, 0.36f, 0.25f, 0}},
    {"Wild Shaking", {1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 0.19f, 1.0f, 0}},
};

/// "Horizontal", "Vertical", "Crop", "Rate", "Jitter", "Blur".
inline constexpr PresetRow kWrapActiveCameraPresets[] = {
    {"Dirt Road", {0.11f, 0.55f, 0.42f, 1.0f, 0.56f, 0.4f}},
    {"Hand Held", {0.21f, 0.19f, 0.34f, 0.67f, 0.54f, 0.21f}},
    {"Jack Hammer", {0.08f, 0.615f, 0.45f, 0.9f, 0.91f, 0.4f}},
    {"Reset To None", {0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f}},
    {"Rocket Ship", {0.0f, 0.54f, 0.3f, 0.82f, 0.89f, 0.73f}},
    {"Stumbling Drunk", {0.4f, 0.38031f, 0.33f, 0.705f, 0.76f, 0.97f}},
    {"Subtle Moves", {0.15f, 0.165f, 0.14f, 0.395f, 0.21f, 0.0f}},
    {"Train Ride", {0.18f, 0.04f, 0.2f, 0.42f, 0.72f, 0.25f}},
    {"Wild Shaking", {1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f}},
};
inline constexpr AnswerRow kActiveCameraAnswers[] = {
    {0}, {1}, {-1, 0.0f}, {2}, {3}, {4}, {-1, 0.0f}, {5}, {-1, 1.0f},
};

/// "Horiz Crop", "Vert Crop", "Feather", "Crop Style". There is no wrapper.
inline constexpr PresetRow kCropBordersPresets[] = {
    {"Fix Overscan", {0.215f, 0.17f, 0.35f, 0}},
    {"Max Crop", {1.0f, 1.0f, 0.835f, 1}},
    {"Picture in Picture", {1.0f, 1.0f, 0.0f, 3}},
    {"Reset to None", {0.0f, 0.0001f, 0.0001f, 0}},
    {"Zoom In", {1.0f, 1.0f, 0.0f, 0}},
};
inline constexpr AnswerRow kCropBordersAnswers[] = {{0}, {1}, {2}, {3}};

/// "Shading", "Columns", "Rows", "Power", "Direction", "Flutter", "Vacuum", "Reverse".
inline constexpr PresetRow kConfettiPresets[] = {
    {"Blow East", {0.29f, 0.368421f, 0.263158f, 0.485f, 0.5f, 0.64f, 0, 0}},
    {"Blow North", {0.29f, 0.368421f, 0.263158f, 0.485f, 0.25f, 0.64f, 0, 0}},
    {"Blow North East", {0.29f, 0.368421f, 0.263158f, 0.485f, 0.375f, 0.64f, 0, 0}},
    {"Blow North West", {0.29f, 0.368421f, 0.263158f, 0.485f, 0.125f, 0.64f, 0, 0}},
    {"Blow South", {0.29f, 0.368421f, 0.263158f, 0.485f, 0.75f, 0.64f, 0, 0}},
    {"Blow South East", {0.29f, 0.368421f, 0.263158f, 0.485f, 0.625f, 0.64f, 0, 0}},
    {"Blow South West", {0.29f, 0.368421f, 0.263158f, 0.485f, 0.875f, 0.64f, 0, 0}},
    {"Blow West", {0.29f, 0.368421f, 0.263158f, 0.485f, 0.0f, 0.64f, 0, 0}},
    {"Blowing Sticks", {0.29f, 0.0f, 0.99f, 0.0f, 0.0f, 0.0f, 0, 0}},
    {"Dive Into Place", {0.29f, 0.0f, 0.99f, 0.0f, 0.385f, 0.0f, 0, 1}},
    {"Dumping Logs", {0.29f, 0.0f, 0.99f, 0.485f, 0.25f, 0.0f, 1, 1}},
    {"Lotsa Leaves", {0.29f, 0.722222f, 0.591111f, 1.0f, 0.0f, 0.64f, 0, 0}},
    {"Undo", {0.29f, 0.222222f, 0.111111f, 0.485f, 0.0f, 0.64f, 0, 1}},
    {"Vacuum East", {0.29f, 0.222222f, 0.206111f, 0.485f, 0.5f, 0.64f, 1, 0}},
    {"Vacuum North", {0.29f, 0.222222f, 0.161111f, 0.485f, 0.25f, 0.64f, 1, 0}},
    {"Vacuum South", {0.29f, 0.222222f, 0.186111f, 0.485f, 0.75f, 0.64f, 1, 0}},
    {"Vacuum West", {0.29f, 0.222222f, 0.206111f, 0.485f, 0.0f, 0.64f, 1, 0}},
    {"Wind Blown Panels Left", {0.29f, 0.22f, 0.0f, 0.395f, 0.0f, 0.64f, 0, 0}},
    {"Wind Blown Panels Right", {0.29f, 0.22f, 0.0f, 0.38f, 0.5f, 0.64f, 0, 0}},
};

/// "Columns", "Rows", "Direction", "Reverse".
inline constexpr PresetRow kWrapConfettiPresets[] = {
    {"Blow East", {0.368421f, 0.263158f, 0.5f, 0}},
    {"Blow North", {0.368421f, 0.263158f, 0.25f, 0}},
    {"Blow North East", {0.368421f, 0.263158f, 0.375f, 0}},
    {"Blow North West", {0.368421f, 0.263158f, 0.125f, 0}},
    {"Blow South", {0.368421f, 0.263158f, 0.75f, 0}},
    {"Blow South East", {0.368421f, 0.263158f, 0.625f, 0}},
    {"Blow South West", {0.368421f, 0.263158f, 0.875f, 0}},
    {"Blow West", {0.368421f, 0.263158f, 0.0f, 0}},
    {"Blowing Sticks", {0.0f, 0.99f, 0.0f, 0}},
    {"Dumping Logs", {0.0f, 0.99f, 0.25f, 1}},
    {"Lotsa Leaves", {0.722222f, 0.591111f, 0.0f, 0}},
    {"Undo", {0.222222f, 0.111111f, 0.0f, 1}},
    {"Wind Blown Panels Left", {0.22f, 0.0f, 0.0f, 0}},
    {"Wind Blown Panels Right", {0.22f, 0.0f, 0.5f, 0}},
};
inline constexpr AnswerRow kConfettiAnswers[] = {
    {-1, 0.545f}, {0}, {1}, {-1, 0.34f}, {2}, {-1, 0.355f}, {-1, 0.0f}, {3},
};

/// "Slices", "Cohesion", "Depth", "Ebb && Flow", "Orientation", "Rotate right", "Spread", "Alternate", "Fog", "Shine",
/// "Background".
inline constexpr PresetRow kPizzaBoxesPresets[] = {
    {"Box Stack Left", {0.425f, 0.37f, 0.0f, 0.0f, 0, 0, 0, 0, 0.0f, 0.0f, 0}},
    {"Box Stack Right", {0.425f, 0.37f, 0.0f, 0.0f, 0, 1, 0, 0, 0.0f, 0.0f, 0}},
    {"Casino", {0.425f, 0.0f, 0.0f, 0.0f, 1, 0, 0, 0, 0.0f, 0.0f, 0}},
    {"Cube Down", {0.0f, 0.0f, 0.31f, 0.465f, 1, 0, 0, 0, 0.0f, 0.0f, 2}},
    {"Cube Left", {0.0f, 0.0f, 0.375f, 0.46f, 0, 0, 0, 0, 0.0f, 0.0f, 2}},
    {"Cube Right", {0.0f, 0.0f, 0.375f, 0.46f, 0, 1, 0, 0, 0.0f, 0.0f, 2}},
    {"Cube Up", {0.0f, 0.0f, 0.31f, 0.465f, 1, 1, 0, 0, 0.0f, 0.0f, 2}},
    {"Flying Saucers", {0.47f, 0.78f, 0.7f, 0.61f, 0, 1, 1, 1, 0.415f, 1.0f, 2}},
    {"Horizontal Shuffle", {0.575f, 0.0f, 0.175f, 0.0f, 1, 0, 1, 0, 0.0f, 0.0f, 0}},
    {"In Your Face", {0.45f, 0.545f, 1.0f, 1.0f, 1, 0, 0, 0, 0.0f, 0.0f, 0}},
    {"Levitate", {0.185f, 1.0f, 0.3f, 0.0f, 0, 1, 1, 1, 0.0f, 0.0f, 2}},
    {"Light Boxes", {0.45f, 0.545f, 0.675f, 0.515f, 0, 0, 0, 0, 1.0f, 0.0f, 0}},
    {"Metal Cube Down", {0.0f, 0.0f, 0.0f, 0.0f, 1, 0, 0, 0, 0.62f, 0.97f, 2}},
    {"Metal Cube Left", {0.0f, 0.0f, 0.0f, 0.0f, 0, 0, 0, 0, 0.62f, 0.97f, 2}},
    {"Metal Cube Right", {0.0f, 0.0f, 0.0f, 0.0f, 0, 1, 0, 0, 0.62f, 0.97f, 2}},
    {"Metal Cube Up", {0.0f, 0.0f, 0.0f, 0.0f, 1, 1, 0, 0, 0.62f, 0.97f, 2}},
    {"Three Boxes", {0.25f, 1.0f, 0.3f, 0.0f, 1, 1, 1, 1, 0.0f, 0.0f, 2}},
    {"Vertical Shuffle", {0.345f, 0.0f, 0.175f, 0.0f, 0, 0, 1, 0, 0.0f, 0.0f, 0}},
};

/// "Slices", "Depth", "Orientation", "Rotate right", "Spread", "Fog", "Shine", "Background".
inline constexpr PresetRow kWrapPizzaBoxesPresets[] = {
    {"Box Stack Left", {0.425f, 0.0f, 0, 0, 0, 0.0f, 0.0f, 0}},
    {"Box Stack Right", {0.425f, 0.0f, 0, 1, 0, 0.0f, 0.0f, 0}},
    {"Casino", {0.425f, 0.0f, 1, 0, 0, 0.0f, 0.0f, 0}},
    {"Cube Down", {0.0f, 0.31f, 1, 0, 0, 0.0f, 0.0f, 2}},
    {"Cube Left", {0.0f, 0.375f, 0, 0, 0, 0.0f, 0.0f, 2}},
    {"Cube Right", {0.0f, 0.375f, 0, 1, 0, 0.0f, 0.0f, 2}},
    {"Cube Up", {0.0f, 0.31f, 1, 1, 0, 0.0f, 0.0f, 2}},
    {"Flying Saucers", {0.47f, 0.7f, 0, 1, 1, 0.415f, 1.0f, 2}},
    {"Horizontal Shuffle", {0.575f, 0.175f, 1, 0, 1, 0.0f, 0.0f, 0}},
    {"Levitate", {0.185f, 0.3f, 0, 1, 1, 0.0f, 0.0f, 2}},
    {"Light Boxes", {0.45f, 0.675f, 0, 0, 0, 1.0f, 0.0f, 0}},
    {"Metal Cube Down", {0.0f, 0.0f, 1, 0, 0, 0.62f, 0.97f, 2}},
    {"Metal Cube Left", {0.0f, 0.0f, 0, 0, 0, 0.62f, 0.97f, 2}},
    {"Metal Cube Right", {0.0f, 0.0f, 0, 1, 0, 0.62f, 0.97f, 2}},
    {"Metal Cube Up", {0.0f, 0.0f, 1, 1, 0, 0.62f, 0.97f, 2}},
    {"Three Boxes", {0.25f, 0.3f, 1, 1, 1, 0.0f, 0.0f, 2}},
    {"Vertical Shuffle", {0.345f, 0.175f, 0, 0, 1, 0.0f, 0.0f, 0}},
};
inline constexpr AnswerRow kPizzaBoxesAnswers[] = {
    {0}, {-1, 0.495f}, {1}, {-1, 0.0f}, {2}, {3}, {4}, {-1, 0.0f}, {5}, {6}, {7},
};

/// "Center" across and upward, "Width", "Height", "Block Size". There is no wrapper.
inline constexpr PresetRow kPixelatorPresets[] = {
    {"Left Face", {0.244186f, 0.395349f, 0.345f, 0.53f, 0.505f}},
    {"Max", {0.488372f, 0.465116f, 1.0f, 1.0f, 1.0f}},
    {"Min", {0.511628f, 0.44186f, 1.0f, 1.0f, 0.0f}},
    {"Reset to None", {0.511628f, 0.465116f, 0.0f, 0.0f, 0.0001f}},
    {"Right Face", {0.767442f, 0.348837f, 0.365f, 0.53f, 0.505f}},
};
inline constexpr AnswerRow kPixelatorAnswers[] = {{0}, {1}, {2}, {3}, {4}};

// clang-format on

/// What a frame of an effect goes by, besides the pictures.
enum class Moments { One, OfProgress, OfTime };

/// An effect with all of its presets.
struct EffectRow {
    std::string_view key; ///< of its files
    const char* innerClass;
    const char* wrapperClass; ///< null without one
    std::span<const PresetRow> innerPresets;
    std::span<const PresetRow> wrapperPresets;
    std::size_t wrapperKnobs;
    std::span<const AnswerRow> answers; ///< one per inner knob
    Moments moments;
};

inline constexpr EffectRow kEffectRows[] = {
    {"air_brush", "CAirbrush", "CWrapAirbrush", kAirBrushPresets, kAirBrushPresets, 2, kAirBrushAnswers,
     Moments::One},
    {"detail_enhancer", "CUnsharpMask", "CWrapDetailEnhancer", kDetailEnhancerPresets,
     kWrapDetailEnhancerPresets, 1, kDetailEnhancerAnswers, Moments::One},
    {"water_color", "CWaterColor", "CWrapWaterColor", kWaterColorPresets, kWrapWaterColorPresets, 5,
     kWaterColorAnswers, Moments::One},
    {"color_melt", "CColormelt", "CWrapColorMelt", kColorMeltPresets, kWrapColorMeltPresets, 4,
     kColorMeltAnswers, Moments::OfProgress},
    {"paper_collage", "CEmbossedPaperBlend", "CWrapPaperCollage", kPaperCollagePresets,
     kWrapPaperCollagePresets, 7, kPaperCollageAnswers, Moments::OfProgress},
    {"smear", "CSmear", "CWrapSmear", kSmearPresets, kWrapSmearPresets, 3, kSmearAnswers,
     Moments::OfProgress},
    {"active_camera", "CActivecamera", "CWrapActiveCamera", kActiveCameraPresets, kWrapActiveCameraPresets, 6,
     kActiveCameraAnswers, Moments::OfTime},
    {"crop_borders", "CBorderCrop", nullptr, kCropBordersPresets, {}, 0, kCropBordersAnswers, Moments::One},
    {"confetti", "D3DBlowingLeaves", "CWrap3DConfetti", kConfettiPresets, kWrapConfettiPresets, 4,
     kConfettiAnswers, Moments::OfProgress},
    {"pizza_boxes", "D3DLayers", "CWrap3DPizzaBoxes", kPizzaBoxesPresets, kWrapPizzaBoxesPresets, 8,
     kPizzaBoxesAnswers, Moments::OfProgress},
    {"pixelator", "CFacePixelator", nullptr, kPixelatorPresets, {}, 0, kPixelatorAnswers, Moments::One},
};

/// The row with this key, or null.
inline const EffectRow* EffectRowOf(std::string_view key)
{
    for (const EffectRow& row : kEffectRows)
        if (row.key == key)
            return &row;
    return nullptr;
}

/// What the inner effect reads when the wrapper's host answers with `hostKnobs`.
inline std::vector<float> InnerKnobs(const EffectRow& row, const std::vector<float>& hostKnobs)
{
    std::vector<float> knobs;
    for (const AnswerRow& answer : row.answers)
        knobs.push_back(answer.hostKnob < 0 ? answer.fixed
                                            : hostKnobs.at(static_cast<std::size_t>(answer.hostKnob)));
    return knobs;
}

/// The first `count` values of a preset.
inline std::vector<float> ValuesOf(const PresetRow& preset, std::size_t count)
{
    return {preset.values, preset.values + count};
}

} // namespace kelmora
