#include "bench/cases.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "image/pixel_format.h"

namespace kelmora::bench {
namespace {

// Made at their first use: sources register in no particular order.
std::vector<Case>& Cases()
{
    static std::vector<Case> cases;
    return cases;
}

std::vector<std::pair<std::string, std::string>>& Makers()
{
    static std::vector<std::pair<std::string, std::string>> makers;
    return makers;
}

} // namespace

void Register(Case work)
{
    Cases().push_back(std::move(work));
}

void RegisterBytes(Case work)
{
    work.format = PF_BGRA8;
    Register(std::move(work));
}

void RegisterFloats(Case work)
{
    work.format = PF_BGRA32F;
    Register(std::move(work));
}

void RegisterBoth(const Case& work)
{
    RegisterBytes(work);
    RegisterFloats(work);
}

const std::vector<Case>& AllCases()
{
    return Cases();
}

void ShowCorner(const std::uint8_t* pixels, std::size_t step, const Picture& output)
{
    for (int y = 0; y < output.Height(); ++y)
        std::copy_n(pixels + static_cast<std::size_t>(y) * step, output.Step(),
                    output.Bytes() + std::ptrdiff_t{y} * output.Step());
}

void RegisterMaker(const std::string& maker, const std::string& version)
{
    Makers().emplace_back(maker, version);
}

const std::vector<std::pair<std::string, std::string>>& AllMakers()
{
    return Makers();
}

} // namespace kelmora::bench
