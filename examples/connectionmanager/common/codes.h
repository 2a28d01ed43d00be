#ifndef DEMO_CODES_H
#define DEMO_CODES_H

/// The numbers that the demo's records carry. Where 3GPP TS 27.007 gives them, they are the same.

/// Error numbers of the modem's command interface ("+CME ERROR: 16"); 0 stands for success.
/// DeviceService_Global::atError2IpcError() maps them to the "IPCMSG_ERROR_CODE" of an answer.
namespace AtError {
enum Number {
    None = 0,
    NoConnection = 1, // the device is away or does not answer
    LinkReserved = 2, // the device is busy with too many other requests
    OperationNotAllowed = 3,
    OperationNotSupported = 4,
    PhonePinRequired = 5,
    SimNotInserted = 10,
    SimPinRequired = 11,
    SimPukRequired = 12,
    SimFailure = 13,
    SimBusy = 14,
    SimWrong = 15,
    IncorrectPassword = 16,
    SimPin2Required = 17,
    SimPuk2Required = 18,
    MemoryFull = 20,
    InvalidIndex = 21,
    NotFound = 22,
    MemoryFailure = 23,
    NoNetworkService = 30,
    NetworkTimeout = 31,
    IncorrectParameters = 50,
    Unknown = 100 // failed without a reason, or with an answer that cannot be understood
};
}

/// BLPinCheckState::nState and BLDiagInfo::nPinState.
namespace PinState {
enum Code { Ready = 0, PinNeeded = 1, PukNeeded = 2, Blocked = 3 };
}

/// BLNetRegState::nState (+CREG).
namespace Registration {
enum Code { None = 0, Home = 1, Searching = 2, Denied = 3, Unknown = 4, Roaming = 5 };
}

/// BLNetworkListItem::nState (+COPS).
namespace Availability {
enum Code { Unknown = 0, Available = 1, Current = 2, Forbidden = 3 };
}

/// The access technology in nAct (+COPS).
namespace AccessTechnology {
enum Code { Gsm = 0, Umts = 2, Lte = 7 };
}

/// The way in which the operator is named, nFormat (+COPS).
namespace OperatorFormat {
enum Code { Long = 0, Short = 1, Numeric = 2 };
}

/// The selection mode in nMode (+COPS).
namespace SelectionMode {
enum Code { Automatic = 0, Manual = 1 };
}

/// BLConnectState::nState.
namespace Connection {
enum Code { Disconnected = 0, Connected = 1 };
}

/// The store of a message or of a phonebook entry.
namespace Store {
enum Code { Computer = 0, Sim = 1 };
}

/// BLSmsListItem::nBoxType.
namespace MessageBox {
enum Code { Inbox = 0, Outbox = 1 };
}

/// BLSmsListItem::nTag.
namespace MessageTag {
enum Code { Unread = 0, Read = 1 };
}

/// BLUssdReport::nReportType (+CUSD).
namespace UssdReport {
enum Code { Done = 0, MoreExpected = 1, Ended = 2, NotSupported = 4, TimedOut = 5 };
}

/// GLDiagInfo::nGroup.
namespace DiagnosisGroup {
enum Code { Sim = 0, Network = 1, Messages = 2 };
}

#endif
