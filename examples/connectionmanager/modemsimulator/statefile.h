#ifndef DEMO_STATEFILE_H
#define DEMO_STATEFILE_H

#include "DataValue/datavalue.h"
#include "modemsimulator/modemstate.h"

/// The state of the modem as a data value, which is what the state file holds.
CDataValue toDataValue(const ModemState& state);

/// Reads a state. A member that is missing keeps what `state` has; lists are taken whole. False,
/// with the reason in `error` and `state` unchanged, for a member that nobody knows, is of the
/// wrong kind or outside its range.
bool fromDataValue(CDataValue value, ModemState* state, QString* error);

/// A state file: read once, then written whole after each change. Its name ends in ".config"
/// (JSON text) or ".xml" (the typed XML form).
class StateFile
{
public:
    /// An empty path: nothing is read and nothing written.
    explicit StateFile(QString path)
        : m_path(std::move(path))
    {
    }

    /// Fills `state` from the file. A file that does not exist yet is created from `state`. False,
    /// with the reason in `error`, for a file that can neither be read nor created.
    bool load(ModemState* state, QString* error);
    /// Replaces the file. False when that fails; the old one is then as it was.
    bool save(const ModemState& state) const;

private:
    QString m_path;
};

#endif
