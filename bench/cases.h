#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "bench/pictures.h"

namespace kelmora::bench {

/// What a case works on. The inputs are shared by all cases and stay as they are; the output begins as zeros.
struct Setting {
    const Picture& first;
    const Picture& second;
    const Picture& output;

    int Width() const { return output.Width(); }
    int Height() const { return output.Height(); }
};

/// A case made ready: kernels computed, memory of its own there.
struct Work {
    std::function<void()> run;       ///< what is timed
    std::function<void()> show = {}; ///< puts the result into the setting's output, where `run` did not
};

using Prepare = std::function<Work(const Setting&)>;

enum class Kind { Operation, Effect };

enum class Sizes {
    All,    ///< 720p, 1080p, 2160p
    FullHd, ///< 1080p alone: slow, or of interest once
};

/// How a result lies in the output's memory.
enum class Layout {
    Pixels,
    Plane, ///< one value per pixel
    Rgb,   ///< three bytes per pixel
};

/// How a maker's result compares with ours.
struct Likeness {
    /// Mean difference of the colours that is put up with, in levels of 255; negative: they are not compared.
    double most;
    const char* remark; ///< what the maker does differently, for the table; may be empty
};

inline constexpr Likeness kSame = {0.75, ""};

/// One maker's way of doing one thing.
struct Case {
    Kind kind = Kind::Operation;
    std::string name;  ///< what is done: the same for all makers
    std::string maker; ///< kOurs, or whose
    std::uint32_t format = 0;
    Prepare prepare;
    Likeness likeness = kSame;
    Sizes sizes = Sizes::All;
    Content content = Content::Scene;
    Layout layout = Layout::Pixels; ///< of all makers' results, told by ours
};

inline constexpr const char* kOurs = "Kelmora";

/// Adds a case; sources do it before main begins.
void Register(Case work);

/// Registers `work` for pictures of bytes, of floats, or both.
void RegisterBytes(Case work);
void RegisterFloats(Case work);
void RegisterBoth(const Case& work);

/// All cases, as registered.
const std::vector<Case>& AllCases();

/// For Work::show: the corner of a larger picture of bytes.
void ShowCorner(const std::uint8_t* pixels, std::size_t step, const Picture& output);

/// A library and its version, for the report.
void RegisterMaker(const std::string& maker, const std::string& version);
const std::vector<std::pair<std::string, std::string>>& AllMakers();

} // namespace kelmora::bench
