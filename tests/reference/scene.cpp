#include "tests/reference/scene.h"

#include <algorithm>
#include <cmath>

#include "tests/reference/air_brush.h"
#include "tests/reference/copies.h"
#include "tests/reference/resize.h"
#include "tests/reference/rounding.h"

namespace kelmora::reference {
namespace {

/// -1 before the canvas, 1 behind it.
int Beside(double at, int size)
{
    return at < 0.0 ? -1 : at > size ? 1 : 0;
}

double WithoutDust(double v)
{
    constexpr double dust = 9.999999747378752e-06;
    if (v > 0.0) {
        if (std::trunc(v + dust) > std::trunc(v))
            return std::trunc(v + dust);
        if (std::trunc(v - dust) < std::trunc(v))
            return std::trunc(v);
        return v - dust <= 0.0 ? 0.0 : v;
    }
    return v < 0.0 && v + dust >= 0.0 ? 0.0 : v;
}

/// All faces share a block, which is given back for one of the larger width and the larger height when it does not do
/// for the next face.
bool TakesMemory(Scene& scene, const SourceRect& rect)
{
    if (rect.width <= scene.heldWidth && rect.height <= scene.heldHeight)
        return true;
    const int number = scene.asked++;
    const bool isGiven =
        number != scene.blockRefused && (scene.blocksGiven < 0 || number < scene.blocksGiven);
    scene.heldWidth = isGiven ? std::max(scene.heldWidth, rect.width) : 0;
    scene.heldHeight = isGiven ? std::max(scene.heldHeight, rect.height) : 0;
    return isGiven;
}

} // namespace

const FrameBuffer& Textures::Add(const Picture& picture)
{
    Texture& texture = m_textures.emplace_back();
    texture.picture = picture;
    // Nobody reads pixels through it.
    const int pixelBytes = BytesOfPixel(picture.format);
    if (picture.width > 0)
        texture.view.Attach(&texture, picture.width, picture.height, picture.width * pixelBytes, pixelBytes,
                            picture.format, false);
    return texture.view;
}

const Picture& Textures::Of(const FrameBuffer& view) const
{
    return std::find_if(m_textures.begin(), m_textures.end(),
                        [&](const Texture& texture) { return &texture.view == &view; })
        ->picture;
}

Picture ReadOrNone(const VideoFrame* frame)
{
    if (!frame || !frame->data || frame->width < 1 || frame->height < 1)
        return {0, 0, frame ? frame->format : 0};
    return ReadRows(Rows(*frame));
}

int LitByte(int value, double light)
{
    return TowardZero(value * light + 0.5);
}

void Light(Picture& picture, double light)
{
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            for (int c = 0; c < 4; ++c) {
                double& value = picture.At(x, y, c);
                if (c == picture.AlphaPlace())
                    continue;
                value = picture.floats ? RoundedToFloat(value * RoundedToFloat(light))
                                       : LitByte(static_cast<int>(value), light);
            }
}

int AverageBrightness(const Picture& picture, const SourceRect& part)
{
    if (picture.width < 1 || part.width < 1 || part.height < 1)
        return 0;
    const int right = std::min(part.x + part.width, picture.width),
              bottom = std::min(part.y + part.height, picture.height);
    const int area = part.width * part.height;
    unsigned bytes = 0;
    float floats = 0;
    for (int y = part.y; y < bottom; ++y)
        for (int x = part.x; x < right; ++x) {
            const auto colour = [&](int c) { return picture.At(x, y, PlaceOfColour(picture.format, c)); };
            if (picture.floats)
                floats += 0.298f * static_cast<float>(colour(2)) + 0.586f * static_cast<float>(colour(1))
                    + 0.113f * static_cast<float>(colour(0));
            else
                bytes += static_cast<unsigned>(76 * colour(2) + 149 * colour(1) + 30 * colour(0)) >> 8;
        }
    return picture.floats ? std::clamp(TowardZero(static_cast<double>(floats) * 255 / area), 0, 255)
                          : static_cast<int>(bytes) / area;
}

void LayBackground(Picture& canvas, const Picture& picture)
{
    if (canvas.width < 1 || picture.width < 1)
        return;
    if (canvas.width <= picture.width && canvas.height <= picture.height) {
        CopyRect(picture, 0, 0, canvas.width, canvas.height, canvas, 0, 0);
        return;
    }
    for (int y = 0; y < canvas.height; ++y)
        for (int word = 0; word < canvas.width; ++word) {
            const bool isThere = word < picture.width && y < picture.height;
            if (canvas.floats) {
                canvas.At(word / 4, y, word % 4) = isThere ? picture.At(word / 4, y, word % 4) : 0.0;
                continue;
            }
            for (int c = 0; c < 4; ++c)
                canvas.At(word, y, c) = isThere ? picture.At(word, y, c) : 0.0;
        }
}

Point OnCanvas(const Picture& canvas, const Vector3& moved)
{
    const double halfWidth = (canvas.width - 1) * 0.5, halfHeight = (canvas.height - 1) * 0.5;
    return {WithoutDust(halfWidth * moved.x + halfWidth), WithoutDust(halfHeight - halfHeight * moved.y)};
}

void DrawFace(Scene& scene, const Textures& textures, const QuadFace& face)
{
    const auto p = face.TransformedCorners(scene.move);
    const Vector3 normal = FaceNormal(p[0], p[3], p[1]);
    const bool isBack = normal.z < 0.0;
    if (isBack && !scene.twoSided)
        return;
    const double toward = std::clamp(scene.twoSided ? std::fabs(normal.z) : normal.z, 0.0, 1.0);
    const double light = (1.0 - scene.ambient) * toward + scene.ambient;

    Quad quad;
    int besideX = 0, besideY = 0;
    for (std::size_t k = 0; k < 4; ++k) {
        quad[k] = OnCanvas(scene.canvas, p[face.GetCornerOrder(isBack)[k]]);
        besideX += Beside(quad[k].x, scene.canvas.width);
        besideY += Beside(quad[k].y, scene.canvas.height);
    }
    if (std::abs(besideX) == 4 || std::abs(besideY) == 4)
        return;

    const SourceRect rect = face.GetSourceRect(isBack);
    if (rect.width < 1 || rect.height < 1)
        return;
    const Picture& texture = textures.Of(*face.GetTexture(isBack));
    if (!TakesMemory(scene, rect))
        return;
    if (rect.x >= texture.width || rect.y >= texture.height)
        return;
    Picture part(rect.width, rect.height, texture.format);
    CopyRect(texture, rect.x, rect.y, rect.width, rect.height, part, 0, 0);
    if (light < 1.0)
        Light(part, light);
    WarpQuad(part, scene.canvas, quad, kLinear, true);
}

} // namespace kelmora::reference
