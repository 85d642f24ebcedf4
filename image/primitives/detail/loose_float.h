#pragma once

namespace kelmora::px {

/// A float that may stand at any address: a host's rows need not start on multiples of 4, and a compiler
/// that may assume they do breaks such pictures once it vectorises the loop.
struct __attribute__((packed, may_alias)) LooseFloat {
    float v;

    operator float() const { return v; }
    LooseFloat& operator=(float value)
    {
        v = value;
        return *this;
    }
};

static_assert(sizeof(LooseFloat) == 4 && alignof(LooseFloat) == 1);

inline const LooseFloat* Loose(const float* p)
{
    return reinterpret_cast<const LooseFloat*>(p);
}

inline LooseFloat* Loose(float* p)
{
    return reinterpret_cast<LooseFloat*>(p);
}

} // namespace kelmora::px
