#include "deviceservice/equipmentplugin.h"

#include "common/demomessages.h"
#include "deviceservice/answer.h"
#include "deviceservice/modem.h"

EquipmentPlugin::EquipmentPlugin(Modem& modem)
    : m_modem(modem)
{
    registerMessage(DemoMessage::EquipmentInfo, "equipment", 0, this);
}

int EquipmentPlugin::equipment(CDataValue&, CDataValue& response)
{
    BLEquipmentInfo info;
    return answerOnSuccess(m_modem.equipment(info), info, response);
}
