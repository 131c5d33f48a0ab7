#pragma once

#include <mutex>

#include <IGESCAFControl_Reader.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDocStd_Application.hxx>
#include <TDocStd_Document.hxx>

#include "fileformat/cad/CadModule_p.h"

namespace kr::cad {

/// OpenCASCADE's document of one file, with the readers that fill it.
///
/// OpenCASCADE 7.6 reads one file at a time: what its readers share in a process they share without a lock.
/// So each document takes its turn from the construction of the readers to EndTurn(), and another one to go.
class CadDocument {
public:
    /// Waits for its turn.
    explicit CadDocument(const QString& fileName);
    /// Waits for another turn, if its own has ended.
    ~CadDocument();
    CadDocument(const CadDocument&) = delete;
    CadDocument& operator=(const CadDocument&) = delete;

    /// @return false when the file cannot be read, or its content not be transferred into the document
    [[nodiscard]] bool Read(Format format, const QString& fileName);

    TDF_LabelSequence FreeShapes() const;

    /// Lets others read. What was taken from the document may be used on; the document may not.
    void EndTurn() { m_turn.unlock(); }

private:
    bool ReadStep(const char* path);
    bool ReadIges(const char* path);

    // Declared first: all that follows goes within the turn.
    std::unique_lock<std::mutex> m_turn;
    Handle(TDocStd_Application) m_application;
    Handle(TDocStd_Document) m_document;
    STEPCAFControl_Reader m_stepReader;
    IGESCAFControl_Reader m_igesReader;
};

} // namespace kr::cad
