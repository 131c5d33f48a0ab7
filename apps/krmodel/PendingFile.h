#pragma once

#include <QString>

class QFile;

namespace krmodel {

/// A file that is written beside its target and takes the target's place once it is good: whatever goes wrong
/// before, the target stays as it was. Of a link the file that it leads to is replaced; access rights are
/// kept. A target that cannot be replaced, as a pipe or a device, gets the bytes at the end instead.
class PendingFile {
public:
    /// Chooses a name and creates nothing.
    explicit PendingFile(const QString& target);

    const QString& GetTarget() const { return m_target; }
    /// Where to write: a name of its own, with the target's suffix.
    const QString& GetName() const { return m_name; }

    /// What is written to this file's name is to take the place of another target, in the same directory.
    PendingFile WithTarget(const QString& target) const;
    /// Another file of the same target that is not to outlive the work.
    PendingFile WithName(const QString& name) const;

    /// Puts the bytes on the disk and the file in its target's place.
    /// @throws Failure with WriteFailed; the target is as it was, unless it is a device
    void Commit() const;

    /// Writes the bytes to an open file, as standard output.
    /// @throws Failure with WriteFailed
    void CopyTo(int descriptor) const;

    /// Removes what was written, if it is still there.
    void Discard() const;

private:
    bool IsReplaceable() const;
    void CopyToTarget() const;
    void Copy(QFile& to) const;
    [[noreturn]] void Fail(const QString& reason) const;

    QString m_target;
    QString m_place; ///< where the target really lies
    QString m_name;
};

} // namespace krmodel
