#include "fileformat/cad/Silence_p.h"

#include <mutex>

#include <Message.hxx>
#include <Message_Messenger.hxx>

namespace kr::cad {

namespace {

struct Printers {
    std::mutex mutex;
    int silenceCount = 0;
    Message_SequenceOfPrinters takenAway;
};

// Never destroyed: a thread may still read while the process ends.
Printers& ThePrinters()
{
    static Printers& printers = *new Printers;
    return printers;
}

} // namespace

Silence::Silence()
{
    Printers& printers = ThePrinters();
    const std::lock_guard<std::mutex> lock(printers.mutex);
    if (printers.silenceCount++ == 0)
        printers.takenAway.Append(Message::DefaultMessenger()->ChangePrinters());
}

Silence::~Silence()
{
    Printers& printers = ThePrinters();
    const std::lock_guard<std::mutex> lock(printers.mutex);
    // The list that is moved in front is empty afterwards.
    if (--printers.silenceCount == 0)
        Message::DefaultMessenger()->ChangePrinters().Prepend(printers.takenAway);
}

} // namespace kr::cad
