#include "fileformat/texture/Settings_p.h"

#include <iterator>

#include <QColor>
#include <QJsonObject>

#include "core/mesh/MeshMaterialParameters.h"
#include "core/utility/Utility.h"

namespace kr::texture {

namespace {

struct NumberSetting {
    const char* key;
    int decimals;
    Vector3D<double> MeshMaterialMatrix::*vector;
    double Vector3D<double>::*component;
};

constexpr NumberSetting kNumbers[] = {
    {"texture_translation_x", 4, &MeshMaterialMatrix::translation, &Vector3D<double>::x},
    {"texture_translation_y", 4, &MeshMaterialMatrix::translation, &Vector3D<double>::y},
    {"texture_repeat_x", 2, &MeshMaterialMatrix::repeat, &Vector3D<double>::x},
    {"texture_repeat_y", 2, &MeshMaterialMatrix::repeat, &Vector3D<double>::y},
    {"texture_rotation_z", 2, &MeshMaterialMatrix::rotation, &Vector3D<double>::z},
};

// By the numbers of MeshMaterialParameters::Wrap.
constexpr const char* kWrappings[] = {"repeat", "mirror", "clamp_edge", "clamp_border"};

const QLatin1String kWrapping("texture_wrapping");
const QLatin1String kBorderColor("texture_border_color");

// The level 0..255 of a colour component, -1 for one that has none; such a number may not fit an int.
int LevelOf(float component)
{
    const float scaled = component * 255;
    return scaled > -1 && scaled < 256 ? static_cast<int>(scaled) : -1;
}

QString TextOfColor(const Vector4D<float>& color)
{
    // A colour with a level of -1 is invalid, and an invalid one has the name of transparent black.
    return QColor(LevelOf(color.x), LevelOf(color.y), LevelOf(color.z), LevelOf(color.w))
        .name(QColor::HexArgb);
}

void ReadColor(const QString& text, Vector4D<float>& color)
{
    // Asked first: setting a colour that there is not prints a message.
    if (!QColor::isValidColor(text))
        return;
    QColor named;
    named.setNamedColor(text);
    const auto component = [](int level) { return static_cast<float>(level) / 255; };
    color = Vector4D<float>(component(named.red()), component(named.green()), component(named.blue()),
                            component(named.alpha()));
}

void ReadWrapping(const QString& text, MeshMaterialParameters& parameters)
{
    for (int wrap = 0; wrap < static_cast<int>(std::size(kWrappings)); ++wrap) {
        if (text == QLatin1String(kWrappings[wrap]))
            parameters.wrapS = parameters.wrapT = wrap;
    }
}

} // namespace

QJsonObject SettingsOf(const MeshMaterialParameters& parameters)
{
    QJsonObject settings;
    for (const NumberSetting& number : kNumbers) {
        const double value = parameters.matrix.*number.vector.*number.component;
        Utility::AddDoubleValueToJsonObj(settings, number.key, value, number.decimals);
    }
    if (parameters.wrapS >= 0 && parameters.wrapS < static_cast<int>(std::size(kWrappings)))
        settings[kWrapping] = QLatin1String(kWrappings[parameters.wrapS]);
    settings[kBorderColor] = TextOfColor(parameters.borderColor);
    return settings;
}

void ReadSettings(const QJsonObject& settings, MeshMaterialParameters& parameters)
{
    for (const NumberSetting& number : kNumbers) {
        const QJsonValue value = settings[QLatin1String(number.key)];
        if (!value.isUndefined())
            parameters.matrix.*number.vector.*number.component = value.toDouble();
    }
    ReadWrapping(settings[kWrapping].toString(), parameters);
    ReadColor(settings[kBorderColor].toString(), parameters.borderColor);
}

} // namespace kr::texture
