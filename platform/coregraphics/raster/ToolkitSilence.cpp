#include "rastergraphics/ToolkitSilence.h"

#include <QtGlobal>

namespace tallyforge {

namespace {

void drop(QtMsgType, const QMessageLogContext&, const QString&) {}

} // namespace

ToolkitSilence::ToolkitSilence() : previous_(reinterpret_cast<void (*)()>(qInstallMessageHandler(drop))) {}

ToolkitSilence::~ToolkitSilence() {
    qInstallMessageHandler(reinterpret_cast<QtMessageHandler>(previous_));
}

} // namespace tallyforge
