#pragma once

#include <QByteArray>
#include <QString>

#include "apps/krmodel/PendingFile.h"

namespace krmodel {

/// Pictures are written as PNG whatever their name says, so it has to say that.
/// @throws Failure with Usage
void RequirePngName(const QString& fileName);

/// Writes a picture and puts it in the output's place.
/// @param png  the bytes of the file; empty when the picture could not be encoded
/// @throws Failure with WriteFailed
void WritePng(const PendingFile& output, const QByteArray& png);

} // namespace krmodel
