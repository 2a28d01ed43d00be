#include "DataValue/datavalue.h"

#include "DataValue/core/tree_p.h"
#include "LogTask/logline_p.h"
#include "text/utf8_p.h"

#include <QLocale>

#include <cstdlib>

namespace {

constexpr char kLogSource[] = "DataValue/datavalue";
constexpr char kDateFormat[] = "dd/MM/yyyy";

void warn(const char* operation, const char* message)
{
    logLine(kLogSource, operation, message);
}

std::string_view orEmpty(const char* text)
{
    return text ? std::string_view(text) : std::string_view();
}

// So that values travel through invokeMethod() and queued connections by name, Qt 5 included.
[[maybe_unused]] const int kValueTypeId = qRegisterMetaType<CDataValue>("CDataValue");
[[maybe_unused]] const int kPointerTypeId = qRegisterMetaType<CDataValue*>("CDataValue*");

} // namespace

CDataValue CDataValue::m_sNull(NULL_VALUE);

void CDataValue::construct(ENUM_VALUE_TYPE kind)
{
    DataValueTree::construct(*this, kind);
}

void CDataValue::destroy() noexcept
{
    DataValueTree::reset(*this);
    delete m_extras;
}

void CDataValue::takeTree(CDataValue& other)
{
    DataValueTree::take(*this, other);
}

CDataValue::CDataValue(const char* utf8)
{
    DataValueTree::constructText(*this, orEmpty(utf8));
}

CDataValue::CDataValue(const std::string& utf8)
{
    DataValueTree::constructText(*this, utf8);
}

CDataValue::CDataValue(const char* begin, const char* end)
{
    const bool any = begin && begin < end;
    DataValueTree::constructText(
        *this,
        any ? std::string_view(begin, static_cast<std::size_t>(end - begin)) : std::string_view());
}

CDataValue::CDataValue(const QString& text)
{
    char usual[256]; // most texts fit here
    if (Utf8::room(text) <= sizeof usual) {
        const char* const end = Utf8::write(text, usual);
        DataValueTree::constructText(
            *this, std::string_view(usual, static_cast<std::size_t>(end - usual)));
        return;
    }
    const QByteArray utf8 = text.toUtf8();
    DataValueTree::constructText(
        *this, std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

CDataValue::CDataValue(const QDate& date)
    // Not QDate::toString(), which in Qt 5 writes the digits of the user's language.
    : CDataValue(QLocale::c().toString(date, QLatin1String(kDateFormat)))
{
}

CDataValue::CDataValue(long long value)
{
    DataValueTree::constructText(*this, std::to_string(value));
}

CDataValue::CDataValue(unsigned long value)
{
    DataValueTree::constructText(*this, std::to_string(value));
}

CDataValue::CDataValue(const CDataValue& other)
    : CDataValue(NULL_VALUE) // so that what was copied is destroyed when memory runs out
{
    if (!DataValueTree::share(*this, other))
        DataValueTree::copy(*this, other, DataValueTree::Copy::Whole);
}

CDataValue& CDataValue::operator=(const CDataValue& other)
{
    DataValueTree::replaceContent(*this, CDataValue(other));
    return *this;
}

CDataValue& CDataValue::operator=(CDataValue&& other)
{
    DataValueTree::replaceContent(*this, DataValueTree::moved(other, *this));
    return *this;
}

void CDataValue::clear()
{
    if (DataValueTree::isOrdinary(m_kind)) {
        DataValueTree::beforeChange(*this, false);
        if (m_packed) {
            const ENUM_VALUE_TYPE kind = m_kind;
            DataValueTree::reset(*this);
            DataValueTree::construct(*this, kind);
            return;
        }
        // The container itself stays, and so do its comments.
        DataValueTree::Container& container = *m_payload.children;
        container.elements.clear();
        container.members.clear();
        container.mirror.reset();
        container.outOfStep = false;
        container.mayHoldAddress = false;
    } else if (DataValueTree::faceKind(*this) != NULL_VALUE) {
        warn("clear", "The value is no container, it is left as it is!");
    }
}

bool CDataValue::isEqual(const CDataValue& other) const
{
    return DataValueTree::equal(*this, other);
}

unsigned int CDataValue::getSize() const
{
    return DataValueTree::isOrdinary(m_kind) ? DataValueTree::shownCount(*this) : 0;
}

bool CDataValue::isEmpty() const
{
    return DataValueTree::isOrdinary(m_kind) ? getSize() == 0
                                             : DataValueTree::faceKind(*this) == NULL_VALUE;
}

bool CDataValue::isIntegral() const
{
    return isInt() || isUInt() || isBool();
}

bool CDataValue::isNumeric() const
{
    return isIntegral() || isDouble();
}

bool CDataValue::isHasAddressType() const
{
    return DataValueTree::holdsAddress(*this);
}

int CDataValue::asInt() const
{
    if (isInt())
        return m_payload.signedNumber;
    if (isUInt()) {
        warn("asInt", "The value type is unsigned int value, convert to int!");
        return static_cast<int>(m_payload.unsignedNumber);
    }
    warn("asInt", "The value type is not int value, NULL_VALUE, return int(0)!");
    return 0;
}

unsigned int CDataValue::asUInt() const
{
    if (isUInt())
        return m_payload.unsignedNumber;
    if (isInt() && m_payload.signedNumber >= 0) {
        warn("asUInt", "The value type is int value, value >= 0, convert to unsigned int!");
        return static_cast<unsigned int>(m_payload.signedNumber);
    }
    if (isInt()) {
        warn("asUInt", "The value type is int value, value < 0, return unsigned int(0)!");
        return 0;
    }
    warn("asUInt", "The value type is not unsigned int value, NULL_VALUE, return unsigned int(0)!");
    return 0;
}

double CDataValue::asDouble() const
{
    if (isDouble())
        return m_payload.real;
    warn("asDouble", "The value type is not double value, NULL_VALUE, return double(0.000000)!");
    return 0.0;
}

bool CDataValue::asBool() const
{
    if (isBool())
        return m_payload.flag;
    warn("asBool", "The value type is not bool value, NULL_VALUE, return bool(false)!");
    return false;
}

const void* CDataValue::asAddress() const
{
    if (isAddress())
        return m_payload.address;
    warn("asAddress", "The value type is not Address value, NULL_VALUE, return NULL!");
    return nullptr;
}

QString CDataValue::asQString() const
{
    if (isString())
        return QString::fromUtf8(DataValueTree::text(*this).c_str());
    warn("asQString", "The value type is not utf8 string, NULL_VALUE, return QString()!");
    return QString();
}

long long CDataValue::asLongLong() const
{
    if (isString())
        return std::strtoll(DataValueTree::text(*this).c_str(), nullptr, 10);
    warn("asLongLong", "The value type is not utf8 string, NULL_VALUE, return long long(0)!");
    return 0;
}

unsigned long CDataValue::asUnsignedLong() const
{
    if (isString())
        return std::strtoul(DataValueTree::text(*this).c_str(), nullptr, 10);
    warn("asUnsignedLong",
         "The value type is not utf8 string, NULL_VALUE, return unsigned long(0)!");
    return 0;
}

QDate CDataValue::asQDate()
{
    if (isString())
        return QDate::fromString(asQString(), QLatin1String(kDateFormat));
    warn("asQDate", "The value type is NULL_VALUE, return QDate(NULL)!");
    return QDate();
}

CDataValue& CDataValue::referToMemberNull()
{
    if (!m_sNull.isNull())
        warn("referToMemberNull", "Warning: Reference is not exists, and Use Null Value to create "
                                  "new Value, reset m_sNull to NULL_VALUE!");
    if (!m_sNull.isNull() || m_sNull.m_extras)
        m_sNull = CDataValue(NULL_VALUE);
    return m_sNull;
}
