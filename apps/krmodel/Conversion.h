#pragma once

#include <optional>
#include <vector>

#include <QStringList>

#include "apps/krmodel/ModelFile.h"

namespace krmodel {

enum class Joining { AsTheyAre, Merge, Split };

/// What a person says of a conversion.
struct ConvertOptions {
    QStringList files;
    QString from;      ///< a suffix; the format of standard input
    QString to;        ///< a suffix; the format to write when no output is named
    QString directory; ///< where outputs go that are not named
    std::optional<Encoding> encoding;
    ReadOptions reading;
    QString unit;
    std::optional<bool> appliesPlacements;
    Joining joining = Joining::AsTheyAre;
    bool hasNormals = false;
    bool isVerbose = false;
};

/// One input and its output.
struct Conversion {
    QString shownInput; ///< for messages
    QString inputFile;
    bool isFromStandardInput = false; ///< the input file is to be filled from there first
    bool isToStandardOutput = false;  ///< the output's bytes go there in the end
    Output output;
};

/// Tells inputs and outputs from each other: "IN OUT", or with a format to write any number of inputs, of
/// which each gives a file of its name beside it or in the directory. "-" is standard input or output.
/// @throws Failure with Usage, before anything is read
std::vector<Conversion> PlanConversions(const ConvertOptions& options);

} // namespace krmodel
