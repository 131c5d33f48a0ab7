#pragma once

#include <vector>

#include "apps/krmodel/MeshReport.h"

namespace krmodel {

/// Something that a person should know of a model before printing it.
struct Remark {
    const char* kind = ""; ///< a name for programs, which stays
    qint64 count = 0;
    QString text;  ///< what it is, how many, what to do, where the first one is
    Finding first; ///< where; without points when there is no place to name
};

/// Whether a model can be printed.
struct Verdict {
    std::vector<Remark> reasons; ///< why not
    std::vector<Remark> remarks; ///< do not keep it from being printed

    bool IsPrintable() const { return reasons.empty(); }
};

/// @param model  lies in its place, in millimetres
/// @param report  of this model
Verdict Judge(const Model& model, const MeshReport& report);

/// A line for each reason, then for each remark, indented.
QString VerdictText(const Verdict& verdict);

/// What keeps a model from being printed and what does not, a line each.
QString DescribeVerdicts();

} // namespace krmodel
