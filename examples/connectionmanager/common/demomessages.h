#ifndef DEMO_DEMOMESSAGES_H
#define DEMO_DEMOMESSAGES_H

/// The vocabulary of the demo: the message identifiers that its processes agree on. A request and
/// its answer have the same identifier. Beside each: the record in the request's
/// "IPCMSG_USER_DATA", and the one in the answer's "IPCMSG_RESPONSE_DATA".
///
/// The identifiers of the application controller are the library's: see ControllerMessage.
namespace DemoMessage {

constexpr char NetworkInfo[] = "DEMO_MESSAGE_NETWORK_INFO";          // - ; BLNetworkInfo
constexpr char NetworkRegState[] = "DEMO_MESSAGE_NETWORK_REG_STATE"; // - ; BLNetRegState
constexpr char NetworkCell[] = "DEMO_MESSAGE_NETWORK_CELL";          // - ; BLNetLacAndCellID
constexpr char NetworkList[] = "DEMO_MESSAGE_NETWORK_LIST";          // - ; BLNetworkListCnf
constexpr char NetworkSet[] = "DEMO_MESSAGE_NETWORK_SET";            // BLNetworkSet ; -

constexpr char PinState[] = "DEMO_MESSAGE_PIN_STATE";   // - ; BLPinCheckState
constexpr char PinVerify[] = "DEMO_MESSAGE_PIN_VERIFY"; // the PIN as text ; BLPINInfo
constexpr char PinChange[] = "DEMO_MESSAGE_PIN_CHANGE"; // BLPINChangeInfo ; BLPINInfo
constexpr char PinEnable[] = "DEMO_MESSAGE_PIN_ENABLE"; // BLPINEnableInfo ; BLPINInfo
constexpr char PukVerify[] = "DEMO_MESSAGE_PUK_VERIFY"; // BLPINVerifyPukInfo ; BLPINInfo

constexpr char EquipmentInfo[] = "DEMO_MESSAGE_EQUIPMENT_INFO"; // - ; BLEquipmentInfo

constexpr char Dial[] = "DEMO_MESSAGE_DIAL";                  // BLConnectionDialUp ; BLConnectState
constexpr char HangUp[] = "DEMO_MESSAGE_HANG_UP";             // - ; BLConnectState
constexpr char ConnectState[] = "DEMO_MESSAGE_CONNECT_STATE"; // - ; BLConnectState
constexpr char Statistics[] = "DEMO_MESSAGE_STATISTICS";      // - ; BLGetStatisticsCnf

constexpr char SmsList[] = "DEMO_MESSAGE_SMS_LIST";       // BLSmsGetListReq ; BLSmsGetListCnf
constexpr char SmsStorage[] = "DEMO_MESSAGE_SMS_STORAGE"; // - ; BLSmsStorageState
// BLSmsDeleteReq ; -. Answered when the work has begun; the reports tell how it goes on.
constexpr char SmsDelete[] = "DEMO_MESSAGE_SMS_DELETE";

constexpr char PbList[] = "DEMO_MESSAGE_PB_LIST";       // BLPbInitListReq ; BLPbInitListCnf
constexpr char PbAdd[] = "DEMO_MESSAGE_PB_ADD";         // BLPBNewItemReq ; BLPbAddItemCnf
constexpr char PbStorage[] = "DEMO_MESSAGE_PB_STORAGE"; // - ; BLPbGetStorageInfoCnf

// BLUssdSendCmd ; -. Answered when it was sent; what the network says comes as a report.
constexpr char UssdSend[] = "DEMO_MESSAGE_USSD_SEND";

constexpr char DiagInfo[] = "DEMO_MESSAGE_DIAG_INFO";         // - ; BLDiagInfo
constexpr char DiagFindings[] = "DEMO_MESSAGE_DIAG_FINDINGS"; // - ; GLDiagInfoList

// BLCancelMessage ; -. Gives up a request whose work goes on after its answer.
constexpr char Cancel[] = "DEMO_MESSAGE_CANCEL";

// Reports, which the device service sends unasked to every client.
constexpr char ReportNetworkInfo[] = "DEMO_MESSAGE_RPT_NETWORK_INFO";   // BLNetworkInfo
constexpr char ReportNewSms[] = "DEMO_MESSAGE_RPT_NEW_SMS";             // BLNewSmsReport
constexpr char ReportSmsProgress[] = "DEMO_MESSAGE_RPT_SMS_PROGRESS";   // BLSmsProgressBarPos
constexpr char ReportSmsDeleted[] = "DEMO_MESSAGE_RPT_SMS_DELETED";     // BLSmsDeleteReturnItem
constexpr char ReportUssd[] = "DEMO_MESSAGE_RPT_USSD";                  // BLUssdReport
constexpr char ReportConnectState[] = "DEMO_MESSAGE_RPT_CONNECT_STATE"; // BLConnectState

} // namespace DemoMessage

/// Identifiers that the application controller answers or sends.
namespace ControllerMessage {

constexpr char ClientInit[] = "WZR_MESSAGE_APPLICATION_CLIENT_INIT";
constexpr char GetDevID[] = "WZR_MESSAGE_APPLICATION_GET_DEV_ID";
constexpr char GetMultDevID[] = "WZR_MESSAGE_APPLICATION_GET_MULT_DEV_ID";
constexpr char DeviceUnplug[] = "WZR_MESSAGE_RPT_DEVICE_UNPLUG";
constexpr char Quit[] = "WZR_MESSAGE_QUIT";

} // namespace ControllerMessage

/// The names of a phonebook entry's texts, in BLPbItem::contents.
namespace PhonebookField {

constexpr char Name[] = "name";
constexpr char Number[] = "number";

} // namespace PhonebookField

/// The device of the demo, unless the command line says otherwise.
constexpr char kDefaultDeviceName[] = "Demo Modem";
constexpr char kDefaultDeviceID[] = "demo-device-1";
/// The modem simulator's line, in the folder for temporary files.
constexpr char kDefaultModemLink[] = "demo-modem";

#endif
