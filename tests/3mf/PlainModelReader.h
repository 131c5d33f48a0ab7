#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QByteArray>
#include <QMap>
#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"

class QXmlStreamReader;

namespace test {

/// Model parts read as they are described, element by element, everything by the XML reader and with lists
/// that are searched from end to end: slow, and plain enough to be checked by eye. Model3MF must hold the
/// same after each call, bit for bit. The meshes are this object's own.
struct PlainModel {
    bool LoadModel(const QByteArray& data);
    bool ParserObject(QXmlStreamReader& reader);
    bool ParserComponent(QXmlStreamReader& reader, int componentsId);
    bool ParserBuild(QXmlStreamReader& reader);
    bool ParserTexture(QXmlStreamReader& reader);
    void ReadComponentsformId();

    static Matrix4<double> MatrixFrom(const QString& text);
    static QString TextFrom(const Matrix4<double>& matrix);

    QString unit = QStringLiteral("millimeter");
    QMap<QString, QString> description;
    int materialId = -1;
    std::vector<QString> colors;
    std::vector<std::unique_ptr<Mesh>> objects;
    QMap<int, std::vector<int>> componentMembers;
    std::vector<Model3MF::TextureGroup> textureGroups;

private:
    void ReadMetadata(QXmlStreamReader& reader);
    void ReadStart(QXmlStreamReader& reader);
};

/// The first thing in which the two differ; empty if there is none.
std::string Difference(const PlainModel& plain, const Model3MF& model);

/// The same numbers bit for bit; what is not a number equals all that is none.
bool IsSameNumber(double a, double b);
bool HaveSameNumbers(const Matrix4<double>& a, const Matrix4<double>& b);

} // namespace test
