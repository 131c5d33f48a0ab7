#pragma once

#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_SequenceOfPrinters.hxx>

namespace test {

/// Takes OpenCASCADE's printers away, for as long as it lives, where tests use OpenCASCADE by themselves.
/// What the library prints stays visible.
class SilentOpenCascade {
public:
    SilentOpenCascade() : m_printers(Printers()) { Printers().Clear(); }
    ~SilentOpenCascade() { Printers() = m_printers; }
    SilentOpenCascade(const SilentOpenCascade&) = delete;
    SilentOpenCascade& operator=(const SilentOpenCascade&) = delete;

private:
    static Message_SequenceOfPrinters& Printers() { return Message::DefaultMessenger()->ChangePrinters(); }

    Message_SequenceOfPrinters m_printers;
};

} // namespace test
