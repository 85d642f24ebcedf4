#pragma once

#include "effects/common/table_effect.h"
#include "effects/painterly/paper_collage_face.h"

namespace kelmora {

/// A dissolve as a stack of cut paper: its greys, rounded off, become two to eight sheets, each in a colour
/// between a ramp and the average of what lies under it, each with a soft shadow on the sheets beneath.
/// Toward both ends it thins out into the plain dissolve. It works in bytes, whatever the pictures hold.
///
/// Render is false without a RenderInfo and true otherwise. Without memory for the sheets the rounded greys
/// remain; without memory for less, or with a format that is no picture format or not the output's, the output
/// stays as it is. With a second picture of another format there is no dissolve, and the collage is of black.
class CEmbossedPaperBlend final : public TableEffect<kPaperCollage> {
protected:
    bool RenderFrame(const RenderCall& call) override;

private:
    // Gives the object its size; nothing uses it.
    [[maybe_unused]] std::uint32_t m_reserved = 0;
};

} // namespace kelmora
