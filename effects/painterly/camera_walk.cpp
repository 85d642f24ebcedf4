#include "effects/painterly/camera_walk.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include "effects/common/precision.h"
#include "image/exact_math.h"

namespace kelmora {
namespace {

constexpr int kDrawBits = 9;
constexpr std::uint32_t kDraws = 1u << kDrawBits;

/// 2 to the power of n / 256, rounded to nearest: no two math libraries agree on all of them, and the last bit of one
/// length may lead to another knot and so to another seed.
constexpr double kPowers[kDraws / 2] = {
    0x1.0000000000000p+0, 0x1.00b1afa5abcbfp+0, 0x1.0163da9fb3335p+0, 0x1.02168143b0281p+0,
    0x1.02c9a3e778061p+0, 0x1.037d42e11bbccp+0, 0x1.04315e86e7f85p+0, 0x1.04e5f72f654b1p+0,
    0x1.059b0d3158574p+0, 0x1.0650a0e3c1f89p+0, 0x1.0706b29ddf6dep+0, 0x1.07bd42b72a836p+0,
    0x1.0874518759bc8p+0, 0x1.092bdf66607e0p+0, 0x1.09e3ecac6f383p+0, 0x1.0a9c79b1f3919p+0,
    0x1.0b5586cf9890fp+0, 0x1.0c0f145e46c85p+0, 0x1.0cc922b7247f7p+0, 0x1.0d83b23395decp+0,
    0x1.0e3ec32d3d1a2p+0, 0x1.0efa55fdfa9c5p+0, 0x1.0fb66affed31bp+0, 0x1.1073028d7233ep+0,
    0x1.11301d0125b51p+0, 0x1.11edbab5e2ab6p+0, 0x1.12abdc06c31ccp+0, 0x1.136a814f204abp+0,
    0x1.1429aaea92de0p+0, 0x1.14e95934f312ep+0, 0x1.15a98c8a58e51p+0, 0x1.166a45471c3c2p+0,
    0x1.172b83c7d517bp+0, 0x1.17ed48695bbc0p+0, 0x1.18af9388c8deap+0, 0x1.1972658375d2fp+0,
    0x1.1a35beb6fcb75p+0, 0x1.1af99f8138a1cp+0, 0x1.1bbe084045cd4p+0, 0x1.1c82f95281c6bp+0,
    0x1.1d4873168b9aap+0, 0x1.1e0e75eb44027p+0, 0x1.1ed5022fcd91dp+0, 0x1.1f9c18438ce4dp+0,
    0x1.2063b88628cd6p+0, 0x1.212be3578a819p+0, 0x1.21f49917ddc96p+0, 0x1.22bdda27912d1p+0,
    0x1.2387a6e756238p+0, 0x1.2451ffb82140ap+0, 0x1.251ce4fb2a63fp+0, 0x1.25e85711ece75p+0,
    0x1.26b4565e27cddp+0, 0x1.2780e341ddf29p+0, 0x1.284dfe1f56381p+0, 0x1.291ba7591bb70p+0,
    0x1.29e9df51fdee1p+0, 0x1.2ab8a66d10f13p+0, 0x1.2b87fd0dad990p+0, 0x1.2c57e39771b2fp+0,
    0x1.2d285a6e4030bp+0, 0x1.2df961f641589p+0, 0x1.2ecafa93e2f56p+0, 0x1.2f9d24abd886bp+0,
    0x1.306fe0a31b715p+0, 0x1.31432edeeb2fdp+0, 0x1.32170fc4cd831p+0, 0x1.32eb83ba8ea32p+0,
    0x1.33c08b26416ffp+0, 0x1.3496266e3fa2dp+0, 0x1.356c55f929ff1p+0, 0x1.36431a2de883bp+0,
    0x1.371a7373aa9cbp+0, 0x1.37f26231e754ap+0, 0x1.38cae6d05d866p+0, 0x1.39a401b7140efp+0,
    0x1.3a7db34e59ff7p+0, 0x1.3b57fbfec6cf4p+0, 0x1.3c32dc313a8e5p+0, 0x1.3d0e544ede173p+0,
    0x1.3dea64c123422p+0, 0x1.3ec70df1c5175p+0, 0x1.3fa4504ac801cp+0, 0x1.40822c367a024p+0,
    0x1.4160a21f72e2ap+0, 0x1.423fb2709468ap+0, 0x1.431f5d950a897p+0, 0x1.43ffa3f84b9d4p+0,
    0x1.44e086061892dp+0, 0x1.45c2042a7d232p+0, 0x1.46a41ed1d0057p+0, 0x1.4786d668b3237p+0,
    0x1.486a2b5c13cd0p+0, 0x1.494e1e192aed2p+0, 0x1.4a32af0d7d3dep+0, 0x1.4b17dea6db7d7p+0,
    0x1.4bfdad5362a27p+0, 0x1.4ce41b817c114p+0, 0x1.4dcb299fddd0dp+0, 0x1.4eb2d81d8abffp+0,
    0x1.4f9b2769d2ca7p+0, 0x1.508417f4531eep+0, 0x1.516daa2cf6642p+0, 0x1.5257de83f4eefp+0,
    0x1.5342b569d4f82p+0, 0x1.542e2f4f6ad27p+0, 0x1.551a4ca5d920fp+0, 0x1.56070dde910d2p+0,
    0x1.56f4736b527dap+0, 0x1.57e27dbe2c4cfp+0, 0x1.58d12d497c7fdp+0, 0x1.59c0827ff07ccp+0,
    0x1.5ab07dd485429p+0, 0x1.5ba11fba87a03p+0, 0x1.5c9268a5946b7p+0, 0x1.5d84590998b93p+0,
    0x1.5e76f15ad2148p+0, 0x1.5f6a320dceb71p+0, 0x1.605e1b976dc09p+0, 0x1.6152ae6cdf6f4p+0,
    0x1.6247eb03a5585p+0, 0x1.633dd1d1929fdp+0, 0x1.6434634ccc320p+0, 0x1.652b9febc8fb7p+0,
    0x1.6623882552225p+0, 0x1.671c1c70833f6p+0, 0x1.68155d44ca973p+0, 0x1.690f4b19e9538p+0,
    0x1.6a09e667f3bcdp+0, 0x1.6b052fa75173ep+0, 0x1.6c012750bdabfp+0, 0x1.6cfdcddd47645p+0,
    0x1.6dfb23c651a2fp+0, 0x1.6ef9298593ae5p+0, 0x1.6ff7df9519484p+0, 0x1.70f7466f42e87p+0,
    0x1.71f75e8ec5f74p+0, 0x1.72f8286ead08ap+0, 0x1.73f9a48a58174p+0, 0x1.74fbd35d7cbfdp+0,
    0x1.75feb564267c9p+0, 0x1.77024b1ab6e09p+0, 0x1.780694fde5d3fp+0, 0x1.790b938ac1cf6p+0,
    0x1.7a11473eb0187p+0, 0x1.7b17b0976cfdbp+0, 0x1.7c1ed0130c132p+0, 0x1.7d26a62ff86f0p+0,
    0x1.7e2f336cf4e62p+0, 0x1.7f3878491c491p+0, 0x1.80427543e1a12p+0, 0x1.814d2add106d9p+0,
    0x1.82589994cce13p+0, 0x1.8364c1eb941f7p+0, 0x1.8471a4623c7adp+0, 0x1.857f4179f5b21p+0,
    0x1.868d99b4492edp+0, 0x1.879cad931a436p+0, 0x1.88ac7d98a6699p+0, 0x1.89bd0a478580fp+0,
    0x1.8ace5422aa0dbp+0, 0x1.8be05bad61778p+0, 0x1.8cf3216b5448cp+0, 0x1.8e06a5e0866d9p+0,
    0x1.8f1ae99157736p+0, 0x1.902fed0282c8ap+0, 0x1.9145b0b91ffc6p+0, 0x1.925c353aa2fe2p+0,
    0x1.93737b0cdc5e5p+0, 0x1.948b82b5f98e5p+0, 0x1.95a44cbc8520fp+0, 0x1.96bdd9a7670b3p+0,
    0x1.97d829fde4e50p+0, 0x1.98f33e47a22a2p+0, 0x1.9a0f170ca07bap+0, 0x1.9b2bb4d53fe0dp+0,
    0x1.9c49182a3f090p+0, 0x1.9d674194bb8d5p+0, 0x1.9e86319e32323p+0, 0x1.9fa5e8d07f29ep+0,
    0x1.a0c667b5de565p+0, 0x1.a1e7aed8eb8bbp+0, 0x1.a309bec4a2d33p+0, 0x1.a42c980460ad8p+0,
    0x1.a5503b23e255dp+0, 0x1.a674a8af46052p+0, 0x1.a799e1330b358p+0, 0x1.a8bfe53c12e59p+0,
    0x1.a9e6b5579fdbfp+0, 0x1.ab0e521356ebap+0, 0x1.ac36bbfd3f37ap+0, 0x1.ad5ff3a3c2774p+0,
    0x1.ae89f995ad3adp+0, 0x1.afb4ce622f2ffp+0, 0x1.b0e07298db666p+0, 0x1.b20ce6c9a8952p+0,
    0x1.b33a2b84f15fbp+0, 0x1.b468415b749b1p+0, 0x1.b59728de5593ap+0, 0x1.b6c6e29f1c52ap+0,
    0x1.b7f76f2fb5e47p+0, 0x1.b928cf22749e4p+0, 0x1.ba5b030a1064ap+0, 0x1.bb8e0b79a6f1fp+0,
    0x1.bcc1e904bc1d2p+0, 0x1.bdf69c3f3a207p+0, 0x1.bf2c25bd71e09p+0, 0x1.c06286141b33dp+0,
    0x1.c199bdd85529cp+0, 0x1.c2d1cd9fa652cp+0, 0x1.c40ab5fffd07ap+0, 0x1.c544778fafb22p+0,
    0x1.c67f12e57d14bp+0, 0x1.c7ba88988c933p+0, 0x1.c8f6d9406e7b5p+0, 0x1.ca3405751c4dbp+0,
    0x1.cb720dcef9069p+0, 0x1.ccb0f2e6d1675p+0, 0x1.cdf0b555dc3fap+0, 0x1.cf3155b5bab74p+0,
    0x1.d072d4a07897cp+0, 0x1.d1b532b08c968p+0, 0x1.d2f87080d89f2p+0, 0x1.d43c8eacaa1d6p+0,
    0x1.d5818dcfba487p+0, 0x1.d6c76e862e6d3p+0, 0x1.d80e316c98398p+0, 0x1.d955d71ff6075p+0,
    0x1.da9e603db3285p+0, 0x1.dbe7cd63a8315p+0, 0x1.dd321f301b460p+0, 0x1.de7d5641c0658p+0,
    0x1.dfc97337b9b5fp+0, 0x1.e11676b197d17p+0, 0x1.e264614f5a129p+0, 0x1.e3b333b16ee12p+0,
    0x1.e502ee78b3ff6p+0, 0x1.e653924676d76p+0, 0x1.e7a51fbc74c83p+0, 0x1.e8f7977cdb740p+0,
    0x1.ea4afa2a490dap+0, 0x1.eb9f4867cca6ep+0, 0x1.ecf482d8e67f1p+0, 0x1.ee4aaa2188510p+0,
    0x1.efa1bee615a27p+0, 0x1.f0f9c1cb6412ap+0, 0x1.f252b376bba97p+0, 0x1.f3ac948dd7274p+0,
    0x1.f50765b6e4540p+0, 0x1.f6632798844f8p+0, 0x1.f7bfdad9cbe14p+0, 0x1.f91d802243c89p+0,
    0x1.fa7c1819e90d8p+0, 0x1.fbdba3692d514p+0, 0x1.fd3c22b8f71f1p+0, 0x1.fe9d96b2a23d9p+0,
};

// --- the generator --------------------------------------------------------------------------------------

/// Some draws at once: state * factor + addend.
struct Jump {
    std::uint32_t factor = 1, addend = 0;
};

constexpr Jump kOneDraw = {214013, 2531011};

constexpr Jump Then(const Jump& first, const Jump& second)
{
    return {first.factor * second.factor, first.addend * second.factor + second.addend};
}

constexpr Jump JumpOver(std::uint64_t draws)
{
    Jump jump;
    for (Jump power = kOneDraw; draws > 0; draws >>= 1, power = Then(power, power))
        if (draws & 1)
            jump = Then(jump, power);
    return jump;
}

constexpr std::uint32_t After(std::uint32_t state, const Jump& jump)
{
    return state * jump.factor + jump.addend;
}

std::uint32_t LowWord(double product)
{
    constexpr double kBeyond = 9223372036854775808.0; // 2^63
    if (product != product)
        return 0;
    if (product >= kBeyond)
        return 0xFFFFFFFF;
    if (product < -kBeyond)
        return 0;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(product));
}

// --- long stretches -------------------------------------------------------------------------------------

// Between two powers of two floats are evenly spaced, so a step of a given length moves a knot by a given number of
// units in the last place, wherever the knot is; unless the sum falls in the middle between two floats, where the
// knot's last bit decides. Knots are positive and stand as their bit patterns, which count these units.

/// Draws in a run.
constexpr std::uint32_t kRun = 16;

/// The bits of a state that decide all later draws begin again after so many of them.
constexpr int kPeriodBits = 25;
constexpr std::uint64_t kPeriod = std::uint64_t{1} << kPeriodBits;

/// Draws come from bits 16 to 24: so far to the left they are the topmost ones.
constexpr int kToTop = 32 - kPeriodBits;

/// How far the steps of one kind go, by their draws, in halves of the unit. An odd number falls in the middle
/// between two floats.
struct Reach {
    std::array<std::uint32_t, kDraws> halves;
    std::uint64_t sum = 0;
    std::uint32_t most = 0; ///< in whole units
    bool ties = false;

    void Set(std::uint32_t draw, std::uint32_t count)
    {
        halves[draw] = count;
        sum += count;
        most = std::max(most, (count + 1) / 2);
        ties = ties || (count & 1) != 0;
    }
};

/// For a knot at the power of two `base`. The length is much smaller.
std::uint32_t HalvesOf(double length, double base, double halvesPerTime)
{
    // In double too the sum is rounded, alike for all knots up to the next power of two.
    const double halves = ((base + length) - base) * halvesPerTime;
    const auto whole = static_cast<std::uint32_t>(halves);
    const bool isTie = (whole & 1) != 0 && static_cast<double>(whole) == halves;
    return isTie ? whole : (whole + 1) & ~1u;
}

/// Lanes of the generator that run side by side, `kSpacing` draws apart.
template <std::uint32_t kSpacing>
class Lanes {
public:
    static constexpr std::uint32_t kCount = 8;

    explicit Lanes(std::uint32_t state)
    {
        for (std::uint32_t i = 0; i < kCount; ++i)
            m_lanes[i] = After(state, JumpOver(i * kSpacing + 1)) << kToTop;
    }

    /// The halves of the next kCount draws, from the two tables in turns.
    std::uint32_t Sum(const std::uint32_t* first, const std::uint32_t* second)
    {
        constexpr Jump kStride = JumpOver(kCount * kSpacing);
        constexpr int kDown = 32 - kDrawBits;
        std::uint32_t sum = 0;
        for (std::uint32_t i = 0; i < kCount; i += 2) {
            sum += first[m_lanes[i] >> kDown] + second[m_lanes[i + 1] >> kDown];
            m_lanes[i] = m_lanes[i] * kStride.factor + (kStride.addend << kToTop);
            m_lanes[i + 1] = m_lanes[i + 1] * kStride.factor + (kStride.addend << kToTop);
        }
        return sum;
    }

private:
    std::uint32_t m_lanes[kCount];
};

/// The steps from one power of two to the next, which are of two kinds in turns.
class Stretch {
public:
    Reach first, second;

    /// Moves the knot most of the way to `limit`, as the draws lead it; two steps are left.
    std::uint32_t Follow(std::uint32_t knot, std::uint32_t limit, CameraRandom& random) const;

private:
    std::uint32_t SumRuns(std::uint32_t state, std::uint32_t runs) const;
    std::uint32_t FollowRuns(std::uint32_t knot, std::uint32_t state, std::uint32_t runs) const;
};

std::uint32_t Stretch::Follow(std::uint32_t knot, std::uint32_t limit, CameraRandom& random) const
{
    constexpr std::uint32_t kMostRuns = 1u << 16;
    const std::uint32_t most = first.most + second.most;
    if (most == 0)
        return knot;
    const bool ties = first.ties || second.ties;
    const auto room = [&] { return limit - knot > most ? limit - knot - most - 1 : 0; };
    // A period has every draw equally often at both kinds.
    const std::uint64_t periodReach = kPeriod / kDraws / 2 * (first.sum + second.sum) / 2;
    if (!ties && periodReach > 0 && periodReach <= room()) {
        const std::uint64_t periods = room() / periodReach;
        knot += static_cast<std::uint32_t>(periods * periodReach);
        random.Skip(periods * kPeriod);
    }
    while (const std::uint32_t runs = std::min(room() / (most * (kRun / 2)), kMostRuns)) {
        const std::uint32_t last = knot;
        const std::uint32_t state = random.GetState();
        knot = ties ? FollowRuns(knot, state, runs) : knot + SumRuns(state, runs) / 2;
        random.Skip(std::uint64_t{runs} * kRun);
        if (knot == last)
            break; // the walk may have ended: the next single step tells
    }
    return knot;
}

/// How many halves some runs lead on. There are no ties.
std::uint32_t Stretch::SumRuns(std::uint32_t state, std::uint32_t runs) const
{
    std::uint32_t sum = 0;
    if (first.most > 0 && second.most > 0) {
        Lanes<1> lanes(state);
        for (; runs > 0; --runs) {
            sum += lanes.Sum(first.halves.data(), second.halves.data());
            sum += lanes.Sum(first.halves.data(), second.halves.data());
        }
        return sum;
    }
    // A kind that never moves the knot need not be drawn.
    const bool isFirst = first.most > 0;
    const std::uint32_t* const halves = isFirst ? first.halves.data() : second.halves.data();
    Lanes<2> lanes(isFirst ? state : After(state, kOneDraw));
    for (; runs > 0; --runs)
        sum += lanes.Sum(halves, halves);
    return sum;
}

/// Where some runs lead, ties to even.
std::uint32_t Stretch::FollowRuns(std::uint32_t knot, std::uint32_t state, std::uint32_t runs) const
{
    const auto follow = [&](const Reach& reach) {
        state = After(state, kOneDraw);
        const std::uint32_t halves = reach.halves[(state >> 16) % kDraws];
        knot += halves / 2;
        knot += knot & halves & 1;
    };
    for (std::uint32_t pairs = runs * (kRun / 2); pairs > 0; --pairs) {
        follow(first);
        follow(second);
    }
    return knot;
}

} // namespace

// --- CameraRandom -----------------------------------------------------------------------------------------

void CameraRandom::SeedCamera(double a, double b, std::uint32_t seed)
{
    m_state = LowWord(a * b) + seed;
}

std::uint32_t CameraRandom::NextDraw()
{
    m_state = After(m_state, kOneDraw);
    return (m_state >> 16) % kDraws;
}

float CameraRandom::CameraDraw(double scale)
{
    return static_cast<float>((NextDraw() * 0.00390625 - 1.0) * scale);
}

void CameraRandom::Skip(std::uint64_t draws)
{
    m_state = After(m_state, JumpOver(draws));
}

double CameraPower(std::uint32_t draw)
{
    return draw < kDraws / 2 ? kPowers[draw] / 2 : kPowers[draw - kDraws / 2];
}

float CameraTime(double time)
{
    if (!std::isfinite(time) || time < 0.0)
        return 0.0f;
    return static_cast<float>(std::min(time, static_cast<double>(std::numeric_limits<float>::max())));
}

// --- CameraWalk -------------------------------------------------------------------------------------------

CameraWalk::CameraWalk(float rate, float hold, std::uint32_t timingSeed)
    : m_restShare(static_cast<double>(hold)), m_moveShare(1.0 - static_cast<double>(hold)),
      m_forward(hold >= 0.0f && hold <= 1.0f)
{
    constexpr std::uint32_t kMostKnots = 1u << 24;
    const double given = static_cast<double>(rate);
    const double r = given >= 0.0001 ? given : 0.0;
    // Kept: another rate is another path, not the same one at another speed.
    m_random.SeedCamera(r, 12345.0, timingSeed);
    m_unit = Single(ExactPower(3.9, 1.0 - r) - 0.9);
    m_knotsLeft = m_forward ? 0 : kMostKnots;
    m_longest = std::max(
        {LengthOf(0, true), LengthOf(0, false), LengthOf(kDraws - 1, true), LengthOf(kDraws - 1, false)});
    // Kept: the first rest is a whole step, whatever the share of rests.
    m_now.end = static_cast<float>(CameraPower(m_random.NextDraw()) * m_unit);
}

CameraInterval CameraWalk::AdvanceTo(float time)
{
    while (time > m_now.end && !m_ended) {
        if (m_forward && m_unit > 0.0)
            SkipWithinBinade(time);
        StepWithinBinade(time);
    }
    m_now.time = m_ended ? m_now.end : time;
    return m_now;
}

double CameraWalk::LengthOf(std::uint32_t draw, bool resting) const
{
    return CameraPower(draw) * m_unit * (resting ? m_restShare : m_moveShare);
}

float CameraWalk::LongestFrom(float end) const
{
    return static_cast<float>(static_cast<double>(end) + m_longest);
}

void CameraWalk::EndHere()
{
    m_now.before = m_now.start = m_now.end;
    m_now.resting = true;
    m_ended = true;
}

void CameraWalk::Step()
{
    const double length = LengthOf(m_random.NextDraw(), !m_now.resting);
    const auto next = static_cast<float>(static_cast<double>(m_now.end) + length);
    if ((next <= m_now.end && !(LongestFrom(m_now.end) > m_now.end)) || (!m_forward && m_knotsLeft-- == 0)) {
        EndHere();
        return;
    }
    m_now.resting = !m_now.resting;
    m_now.before = m_now.start;
    m_now.start = m_now.end;
    m_now.end = next;
}

/// Knot by knot, up to `time` or the next power of two.
void CameraWalk::StepWithinBinade(float time)
{
    const std::uint32_t top = (std::bit_cast<std::uint32_t>(m_now.end) | 0x007FFFFF) + 1;
    const float limit = m_now.end > 0.0f ? std::min(time, std::bit_cast<float>(top)) : time;
    do
        Step();
    while (limit > m_now.end && !m_ended);
}

/// Most of the way to `time` or to the next power of two, where that is long. Two steps are left, so that the knots
/// before the last one come out too.
void CameraWalk::SkipWithinBinade(float time)
{
    constexpr double kWorthwhile = 1024.0; // steps
    const auto from = std::bit_cast<std::uint32_t>(m_now.end);
    const std::uint32_t bottom = from & 0x7F800000;
    const std::uint32_t limit = std::min(bottom + 0x00800000, std::bit_cast<std::uint32_t>(time));
    const auto base = static_cast<double>(std::bit_cast<float>(bottom));
    const double halvesPerTime = 16777216.0 / base;
    if (!((limit - from) * 2.0 > kWorthwhile * m_longest * halvesPerTime))
        return;
    Stretch stretch;
    for (std::uint32_t draw = 0; draw < kDraws; ++draw) {
        stretch.first.Set(draw, HalvesOf(LengthOf(draw, !m_now.resting), base, halvesPerTime));
        stretch.second.Set(draw, HalvesOf(LengthOf(draw, m_now.resting), base, halvesPerTime));
    }
    m_now.end = std::bit_cast<float>(stretch.Follow(from, limit, m_random));
}

// --- the curve --------------------------------------------------------------------------------------------

namespace {

/// A level per segment of the interval, 0 at both ends, joined by lines.
double Wobble(const CameraInterval& interval, float jitter, std::uint32_t valueSeed)
{
    constexpr int kMostSegments = 1'000'000;
    const double strength = static_cast<double>(jitter);
    const int n = std::min(Truncate(Single(strength * strength * 10.0)), kMostSegments - 2) + 2;
    const double length = static_cast<double>(interval.end) - static_cast<double>(interval.start);
    const double segment = Single(length / n);
    if (segment == 0.0)
        return 0.0;

    CameraRandom random;
    random.SeedCamera(static_cast<double>(interval.start), 532.0, valueSeed);
    double time = static_cast<double>(interval.time);
    double from = 0.0, to = static_cast<double>(random.CameraDraw(0.5));
    double start = static_cast<double>(interval.start), end = Single(start + segment);
    for (int count = 2; time > end; ++count) {
        const double next = Single(end + segment);
        if (next <= end) {
            time = end;
            break;
        }
        from = to;
        to = count >= n ? 0.0 : static_cast<double>(random.CameraDraw(0.5));
        start = end;
        end = next;
    }
    const double way = Single((time - start) / segment);
    return Single(way * to + (1.0 - way) * from) * strength;
}

/// From 0 to 1 along half a wave.
double EaseOf(const CameraInterval& interval)
{
    const double start = static_cast<double>(interval.start);
    const double length = static_cast<double>(interval.end) - start;
    const double way = length == 0.0 ? 0.0 : Single((static_cast<double>(interval.time) - start) / length);
    return Single((ExactTurn(Single((way * 2.0 - 1.0) * 1.570796012878418)).sine + 1.0) / 2.0);
}

/// Where the camera looks at a key position.
double ValueAt(float key, std::uint32_t valueSeed)
{
    CameraRandom random;
    random.SeedCamera(static_cast<double>(key), 641.0, valueSeed);
    return static_cast<double>(random.CameraDraw(1.0));
}

} // namespace

float CameraNoise(const CameraInterval& interval, float jitter, std::uint32_t valueSeed)
{
    const double wobble = Wobble(interval, jitter, valueSeed) / (interval.resting ? 2.0 : 1.0);
    const double ease = EaseOf(interval);
    // A rest stays where it starts, so a move leads from the rest before it to the one after it.
    const double from = ValueAt(interval.resting ? interval.start : interval.before, valueSeed);
    const double to = ValueAt(interval.resting ? interval.start : interval.end, valueSeed);
    return static_cast<float>(from * Single(1.0 - ease) + to * ease + wobble);
}

float CameraNoise(float rate, float hold, float jitter, double time, std::uint32_t timingSeed,
                  std::uint32_t valueSeed)
{
    CameraWalk walk(rate, hold, timingSeed);
    return CameraNoise(walk.AdvanceTo(CameraTime(time)), jitter, valueSeed);
}

} // namespace kelmora
