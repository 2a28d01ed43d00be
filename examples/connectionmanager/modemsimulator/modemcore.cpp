#include "modemsimulator/modemcore.h"

#include "common/codes.h"
#include "modemsimulator/commandfamily.h"

ModemCore::ModemCore(ModemState initial)
    : state(std::move(initial))
{
}

int ModemCore::simError() const
{
    if (!state.sim.inserted)
        return AtError::SimNotInserted;
    if (state.sim.pukAttempts == 0)
        return AtError::SimFailure;
    if (state.sim.pinAttempts == 0)
        return AtError::SimPukRequired;
    return state.sim.pinAsked && !pinVerified ? AtError::SimPinRequired : AtError::None;
}

int ModemCore::registration() const
{
    if (simError() != AtError::None || state.network.mode == 2)
        return Registration::None;
    if (state.network.registration >= 0)
        return state.network.registration;
    return &operatorInUse() == &state.network.operators.front() ? Registration::Home
                                                                : Registration::Roaming;
}

bool ModemCore::isRegistered() const
{
    return registration() == Registration::Home || registration() == Registration::Roaming;
}

const OperatorState& ModemCore::operatorInUse() const
{
    for (const OperatorState& candidate : state.network.operators) {
        if (candidate.numeric == state.network.selected)
            return candidate;
    }
    return state.network.operators.front();
}

void ModemCore::simChanged()
{
    for (CommandFamily* family : families)
        family->simChanged();
    registrationChanged();
}

void ModemCore::registrationChanged()
{
    for (CommandFamily* family : families)
        family->registrationChanged();
}
