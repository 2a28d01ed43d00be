// What a modem sends: cut into lines, and read as every answer there is.

#include "fuzztarget.h"

#include "deviceservice/atanswers.h"
#include "deviceservice/attext.h"

namespace {

void readLine(const QByteArray& line)
{
    require(line.size() <= AtLines::kLongestLine, "lines are bounded");
    AtText::finalResult(line);
    AtText::isUnsolicited(line);
    const QByteArray information = AtText::information(line);
    const QList<AtParameter> parameters = AtText::parameters(information);
    for (int i = 0; i <= parameters.size(); ++i) {
        const auto number = AtText::number(parameters, i, 16);
        require(!number || *number >= 0, "numbers are not negative");
        AtText::decodedNumber(AtText::content(parameters, i));
    }
    const QString text = AtText::decoded(information);
    require(AtText::decoded(AtText::encoded(text)) == text, "a text survives its coding");
    AtText::nameOf(line);
    AtText::shown(line);
}

void readAnswer(const QByteArray& line)
{
    AtAnswer::place(line);
    AtAnswer::place(line, true);
    BLNetworkInfo info;
    AtAnswer::readOperator(line, info);
    AtAnswer::networks(line);
    const auto strength = AtAnswer::signalStrength(line);
    require(!strength || (*strength >= 0 && *strength <= 99), "the signal is on its scale");
    AtAnswer::signalIndicator(line);
    AtAnswer::pinState(line);
    AtAnswer::ownNumber(line);
    AtAnswer::room(line);
    AtAnswer::arrivedMessage(line);
    AtAnswer::phonebookPlaces(line);
    AtAnswer::phonebookEntry(line);
    AtAnswer::ussd(line);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    AtLines cutter;
    QList<QByteArray> lines;
    // In two reads, which may cut a line.
    const int half = static_cast<int>(size / 2);
    const QByteArray bytes = bytesOf(data, size);
    lines += cutter.add(bytes.constData(), half);
    lines += cutter.add(bytes.constData() + half, static_cast<int>(size) - half);
    for (const QByteArray& line : std::as_const(lines)) {
        readLine(line);
        readAnswer(line);
        AtAnswer::message(line, line, 3);
    }
    AtAnswer::attempts(lines, "SIM PIN");
    AtAnswer::isActive(lines, 1);
    int skipped = 0;
    const BLSmsGetListCnf list = AtAnswer::messages(lines, &skipped);
    require(skipped >= 0 && list.listSmsItem.size() <= std::size_t(lines.size()),
            "no message is made up");
    return 0;
}
