// Whole effects as a host calls them.

#include "bench/cases.h"
#include "bench/effect_cases.h"
#include "library/effect_numbers.h"

namespace kelmora::bench {
namespace {

/// All that a host keeps from frame to frame.
struct Player {
    IVideoEffect* effect;
    Host host;
    VideoFrame first, second, output;
    RenderInfo info = {};

    Player(const EffectCase& work, const Setting& setting)
        : effect(CreateEffectOfNumber(work.effectId)), host(work.knobs), first(setting.first.Record()),
          second(setting.second.Record()), output(setting.output.Record())
    {
        info.progress = work.progress;
        info.time = work.time;
    }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    ~Player() { effect->Release(); }
};

const bool g_registered = [] {
    for (const EffectCase& effect : EffectCases()) {
        Case work;
        work.kind = Kind::Effect;
        work.name = effect.name;
        work.maker = kOurs;
        work.content = effect.content;
        work.prepare = [&effect](const Setting& setting) {
            const auto player = std::make_shared<Player>(effect, setting);
            return Work{[=] {
                player->effect->Render(&player->host, &player->first, &player->second, &player->output,
                                       &player->info);
            }};
        };
        RegisterBoth(work);
    }
    return true;
}();

} // namespace
} // namespace kelmora::bench
