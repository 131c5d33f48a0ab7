#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>

#include "apps/krmodel/ExitCode.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Verdict.h"

/// What the program prints for other programs: one object a line, one line a file. docs/json.md tells its
/// members, which keep their names and meanings as long as the version stays.
namespace krmodel {

constexpr int kJsonVersion = 1;

/// Null for what is not finite: JSON has no other word for it.
QJsonValue JsonNumber(double number);

/// Format, variant, unit, objects with their placements, metadata, colours and thumbnail, and what the
/// library does not carry of the file. The model is as it was read, not placed yet.
QJsonObject DescribeModel(const LoadedModel& loaded, const QString& fileName);

QJsonArray DescribeLosses(const std::vector<Loss>& losses);

/// Facets, vertices, bounds, volume and the counts of the topology, of a model that was placed.
QJsonObject DescribeSurface(const MeshReport& report);

/// The verdict with its reasons and remarks.
QJsonObject DescribeVerdict(const Verdict& verdict);

/// The members of both.
QJsonObject Merged(QJsonObject object, const QJsonObject& more);

/// The line of a file that was worked on.
QByteArray JsonLine(const QString& fileName, const QJsonObject& content);
/// The line of a file that was not. @param error  the file's name in front of it is left out
QByteArray JsonFailure(const QString& fileName, ExitCode code, const QString& error);

} // namespace krmodel
