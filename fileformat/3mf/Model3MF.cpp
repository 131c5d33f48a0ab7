#include "fileformat/3mf/Model3MF.h"

#include <QStringList>

#include "core/mesh/Mesh.h"

namespace {

struct UnitLength {
    const char* name;
    double millimetres;
};

constexpr UnitLength kUnits[] = {
    {"micron", 0.001}, {"millimeter", 1.0}, {"centimeter", 10.0},
    {"inch", 25.4},    {"foot", 304.8},     {"meter", 1000.0},
};

} // namespace

void Model3MF::ReadComponentsformId()
{
    for (const Mesh* const mesh : m_objects)
        m_componentMembers[mesh->GetComponentsId()].push_back(mesh->GetObjectID());
}

double Model3MF::GetUnitScale(const QString& unit)
{
    for (const UnitLength& known : kUnits) {
        if (unit == QLatin1String(known.name))
            return known.millimetres;
    }
    return 1.0;
}

// 3MF multiplies row vectors from the left, Matrix4 column vectors from the right: what 3MF writes as a row
// is a column here.

Matrix4<double> Model3MF::ConvertFrom3MFMatStrToMat(const QString& text)
{
    Matrix4<double> matrix;
    int count = 0;
    for (const QStringRef& number : text.splitRef(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        matrix.set(count % 3, count / 3, number.toDouble());
        ++count;
    }
    return matrix;
}

QString Model3MF::ConvertFromMatTo3MFMatStr(const Matrix4<double>& matrix)
{
    QStringList numbers;
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 3; ++row)
            numbers.append(QStringLiteral("%1").arg(matrix.get(row, column), 0, 'g', -1));
    }
    return numbers.join(QLatin1Char(' '));
}
