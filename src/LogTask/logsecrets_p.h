#ifndef LOGTASK_LOGSECRETS_P_H
#define LOGTASK_LOGSECRETS_P_H

#include <QString>

/// What HideInLog() has asked for. Any thread may call; while nothing is hidden, a call costs the
/// reading of one variable.

/// Whether there is anything to look for in a line.
bool hidesSecrets();

/// The line with "***" in the place of each secret. Only the line itself is looked at, once; it may
/// be cut anywhere, and what is around the JSON text is of no matter.
QString withoutSecrets(const QString& line);

/// Whether all data of the message is secret.
bool hidesDataOf(const char* message);

#endif
