#pragma once

class QJsonObject;
struct MeshMaterialParameters;

namespace kr::texture {

/// What a texture file keeps of the parameters, under the keys of its settings.
QJsonObject SettingsOf(const MeshMaterialParameters& parameters);

/// Sets the parameters that @p settings has keys for; the matrix is not built.
void ReadSettings(const QJsonObject& settings, MeshMaterialParameters& parameters);

} // namespace kr::texture
