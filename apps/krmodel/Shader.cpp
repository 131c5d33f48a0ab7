#include "apps/krmodel/Shader.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <Eigen/Geometry>

namespace krmodel {

namespace {

struct Light {
    Eigen::Vector3f toLight; ///< camera axes
    Colour colour;
};

// The key light stands to the upper left of the viewer, the fill light low to the right, the rim light
// behind.
const Light kLights[] = {
    {Eigen::Vector3f(-0.58F, 0.55F, 0.60F).normalized(), Colour(1.00F, 0.97F, 0.92F)},
    {Eigen::Vector3f(0.85F, 0.10F, 0.50F).normalized(), Colour(0.16F, 0.18F, 0.22F)},
    {Eigen::Vector3f(0.30F, 0.55F, -0.78F).normalized(), Colour(0.20F, 0.22F, 0.25F)},
};
const Colour kSky(0.42F, 0.45F, 0.50F);
const Colour kEarth(0.17F, 0.16F, 0.15F);
const Colour kBack(0.62F, 0.26F, 0.18F);
constexpr float kShine = 0.10F;
constexpr float kShadowStrength = 0.45F;
/// The light that throws the shadow stands nearly overhead, to the left and a little behind: a long shadow
/// would leave the picture.
const Eigen::Vector3f kShadowLean(-0.42F, 0.0F, -0.18F);
// Seen from lower than this the ground is a line.
constexpr float kLowestGroundSine = 0.15F;

// Nearby surface that stands in the way of light from the sky.
constexpr int kOcclusionTaps = 6;
constexpr float kOcclusionReach = 0.22F;
constexpr float kOcclusionStrength = 1.6F;
constexpr float kMostOcclusion = 0.85F;

/// To the 32nd, for highlights.
float Narrowed(float cosine)
{
    for (int doubling = 0; doubling < 5; ++doubling)
        cosine *= cosine;
    return cosine;
}

using TapRing = std::array<Eigen::Vector2f, kOcclusionTaps>;

constexpr unsigned kTapRings = 64;

/// The same spiral of points within a unit circle, each time turned a little further.
std::array<TapRing, kTapRings> MakeTapRings()
{
    constexpr float kGoldenAngle = 2.39996323F, kTurn = 6.2831853F;
    std::array<TapRing, kTapRings> rings;
    for (unsigned ring = 0; ring < kTapRings; ++ring)
        for (unsigned tap = 0; tap < kOcclusionTaps; ++tap) {
            const float angle = kTurn * float(ring) / kTapRings + kGoldenAngle * float(tap);
            rings[ring][tap] =
                Eigen::Vector2f(std::cos(angle), std::sin(angle)) * (float(tap) + 0.5F) / kOcclusionTaps;
        }
    return rings;
}

const std::array<TapRing, kTapRings> kOcclusionRings = MakeTapRings();

/// Samples side by side get rings that are turned differently.
const TapRing& RingFor(int x, int y)
{
    const unsigned mixed = (unsigned(x) * 0x9E3779B1U) ^ (unsigned(y) * 0x85EBCA77U);
    return kOcclusionRings[(mixed * 0xC2B2AE3DU >> 20) % kTapRings];
}

/// How opaque black has to be to darken white as much. Programs lay pictures over each other by the numbers
/// in their files, which are not proportional to light.
float OpacityOfShadow(float shadow)
{
    return 1 - std::pow(1 - shadow, 1 / 2.2F);
}

float Cross(const Eigen::Vector2f& a, const Eigen::Vector2f& b)
{
    return a.x() * b.y() - a.y() * b.x();
}

} // namespace

Shader::Shader(const Scene& scene, const Camera& camera, const VisibilityBuffer& visible,
               const std::vector<ScreenPoint>& projected, const Background& background)
    : m_scene(scene),
      m_camera(camera),
      m_visible(visible),
      m_projected(projected),
      m_background(background),
      m_depths(visible),
      m_normals(scene)
{
    const Eigen::Vector3f up = camera.GetUp();
    if (up.z() > kLowestGroundSine)
        m_shadow.emplace(scene, up, (up + kShadowLean).normalized());
}

Sample Shader::GroundAt(int x, int y) const
{
    const float shadow = kShadowStrength * ShadowAt(x, y);
    if (m_background.isTransparent)
        return {0, 0, 0, shadow > 0 ? OpacityOfShadow(shadow) : 0};
    const float down = (float(y) + 0.5F) / float(m_camera.GetSize().height());
    return Opaque((m_background.top + (m_background.bottom - m_background.top) * down) * (1 - shadow));
}

float Shader::ShadowAt(int x, int y) const
{
    if (!m_shadow)
        return 0;
    const Eigen::Vector3f eye = m_camera.GetPosition();
    const Eigen::Vector3f ray = m_camera.Unproject({float(x) + 0.5F, float(y) + 0.5F, 1}) - eye;
    const Eigen::Vector3f up = m_camera.GetUp();
    const float steps = (m_scene.groundHeight - up.dot(eye)) / up.dot(ray);
    // Above the horizon the ground lies behind the viewer.
    return steps > 0 ? m_shadow->At(eye + ray * steps) : 0;
}

/// What each corner counts where the sample lies in the face, as seen in perspective.
std::array<float, 3> Shader::WeightsAt(int face, int x, int y) const
{
    const TriangleFace& corners = m_scene.faces[size_t(face)];
    const Eigen::Vector2f sample(float(x) + 0.5F, float(y) + 0.5F);
    std::array<Eigen::Vector2f, 3> towards;
    for (int i = 0; i < 3; ++i) {
        const ScreenPoint& corner = m_projected[size_t(corners[i])];
        towards[size_t(i)] = Eigen::Vector2f(corner.x, corner.y) - sample;
    }
    const float side = Cross(towards[1] - towards[0], towards[2] - towards[0]) < 0 ? -1.0F : 1.0F;
    std::array<float, 3> weights{};
    for (int i = 0; i < 3; ++i) {
        const float opposite = side * Cross(towards[size_t((i + 1) % 3)], towards[size_t((i + 2) % 3)]);
        weights[size_t(i)] = std::max(0.0F, opposite) * m_projected[size_t(corners[i])].inverseDistance;
    }
    return weights;
}

Eigen::Vector3f Shader::NormalAt(int face, const std::array<float, 3>& weights) const
{
    Eigen::Vector3f normal = Eigen::Vector3f::Zero();
    for (int i = 0; i < 3; ++i)
        normal += m_normals.At(face, i) * weights[size_t(i)];
    const float length = normal.norm();
    return length > 0 ? Eigen::Vector3f(normal / length) : Eigen::Vector3f(Eigen::Vector3f::UnitZ());
}

Colour Shader::PaintAt(int face, const std::array<float, 3>& weights) const
{
    const Paint& paint = m_scene.PaintOf(face);
    const float sum = weights[0] + weights[1] + weights[2];
    if (!paint.HasTexture() || size_t(face) >= m_scene.textureFaces.size() || !(sum > 0))
        return paint.GetColour();
    const TriangleFace& corners = m_scene.textureFaces[size_t(face)];
    float u = 0, v = 0;
    for (int i = 0; i < 3; ++i) {
        const Vector2D<float>& corner = m_scene.textureCoordinates[size_t(corners[i])];
        u += corner.x * weights[size_t(i)] / sum;
        v += corner.y * weights[size_t(i)] / sum;
    }
    return paint.At(u, v);
}

/// Looks at surface points around the sample; the mean over the samples of a pixel is smooth.
float Shader::OcclusionAt(int x, int y, const Eigen::Vector3f& point, const Eigen::Vector3f& normal) const
{
    constexpr float kFlat = 0.09F;
    const float reachPixels = m_camera.PixelsOf(kOcclusionReach, m_visible.InverseDistanceAt(x, y));
    float sum = 0;
    for (const Eigen::Vector2f& tap : RingFor(x, y)) {
        const ScreenPoint there =
            m_depths.Near(float(x) + reachPixels * tap.x(), float(y) + reachPixels * tap.y());
        if (there.inverseDistance <= 0)
            continue;
        const Eigen::Vector3f towards = m_camera.Unproject(there) - point;
        const float height = towards.dot(normal);
        // Most of what is around lies in the plane of the surface or below it.
        if (height <= 0)
            continue;
        const float squared = towards.squaredNorm() + 1e-6F;
        const float near = std::max(0.0F, 1 - squared / (kOcclusionReach * kOcclusionReach));
        sum += near * std::max(0.0F, height / std::sqrt(squared) - kFlat);
    }
    return std::min(kMostOcclusion, kOcclusionStrength * sum / kOcclusionTaps);
}

bool Shader::ShowsBack(int face, const Eigen::Vector3f& toViewer) const
{
    const TriangleFace& corners = m_scene.faces[size_t(face)];
    const auto corner = [&](int i) -> const Eigen::Vector3f& { return m_scene.points[size_t(corners[i])]; };
    return (corner(1) - corner(0)).cross(corner(2) - corner(0)).dot(toViewer) < 0;
}

Colour Shader::Lit(const Colour& material, const Eigen::Vector3f& normal, const Eigen::Vector3f& toViewer,
                   float open) const
{
    const float skyward = 0.5F + 0.5F * normal.dot(m_camera.GetUp());
    Colour diffuse = (kEarth + (kSky - kEarth) * skyward) * open;
    Colour shine = Colour::Zero();
    for (const Light& light : kLights) {
        // Where the sky is hidden, so is part of a lamp.
        diffuse += light.colour * (std::max(0.0F, normal.dot(light.toLight)) * (0.35F + 0.65F * open));
        const Eigen::Vector3f halfway = (light.toLight + toViewer).normalized();
        shine += light.colour * (kShine * Narrowed(std::max(0.0F, normal.dot(halfway))) * open);
    }
    return material * diffuse + shine;
}

Colour Shader::SurfaceAt(int face, int x, int y) const
{
    const Eigen::Vector3f point =
        m_camera.Unproject({float(x) + 0.5F, float(y) + 0.5F, m_visible.InverseDistanceAt(x, y)});
    const Eigen::Vector3f toViewer = (m_camera.GetPosition() - point).normalized();
    const bool isBack = ShowsBack(face, toViewer);
    const std::array<float, 3> weights = WeightsAt(face, x, y);
    const Eigen::Vector3f normal = NormalAt(face, weights) * (isBack ? -1.0F : 1.0F);
    return Lit(isBack ? kBack : PaintAt(face, weights), normal, toViewer,
               1 - OcclusionAt(x, y, point, normal));
}

} // namespace krmodel
