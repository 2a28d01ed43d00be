#ifndef TESTS_DATAVALUE_REFERENCEMODEL_H
#define TESTS_DATAVALUE_REFERENCEMODEL_H

#include "DataValue/datavalue.h"

#include <json/value.h>

#include <list>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// Thrown where CDataValue ends the process: the condition is the text of its message.
class BrokenPrecondition : public std::logic_error
{
public:
    using std::logic_error::logic_error;
};

/// What CDataValue has to do, written down as plainly as possible and with no regard to cost.
///
/// Every value really owns a JSON mirror. Scalars live in it; the mirror of an array or a map
/// repeats the children's mirrors and is copied, changed and rebuilt in exactly the places where
/// the rules say so. Texts, counts, keys and searches are read from the mirrors. The randomised
/// tests compare CDataValue with this model, so keep it simple: it must be right by inspection.
class ModelValue
{
public:
    ModelValue(ENUM_VALUE_TYPE kind = NULL_VALUE);
    ModelValue(bool value);
    ModelValue(int value);
    ModelValue(unsigned int value);
    ModelValue(double value);
    ModelValue(const char* utf8);
    ModelValue(const std::string& utf8);
    ModelValue(const void* address);
    ModelValue(const ModelValue& other);
    ModelValue& operator=(const ModelValue& other);

    void swap(ModelValue& other);
    void clear();

    ENUM_VALUE_TYPE type() const { return m_kind; }
    bool isEqual(const ModelValue& other) const;
    unsigned int getSize() const;
    bool isEmpty() const;
    bool isHasAddressType() const;
    /// Whether this value is `other` or one of the values that hold it.
    bool holds(const ModelValue& other) const;
    /// The number of values in this tree.
    size_t treeSize() const;

    int asInt() const;
    unsigned int asUInt() const;
    double asDouble() const;
    bool asBool() const;
    const void* asAddress() const;
    /// The bytes of a string, empty for other kinds.
    std::string asBytes() const;

    ModelValue& mapSet(const std::string& key, const ModelValue& value, bool synchronise);
    ModelValue& mapGet(const std::string& key);
    bool mapIsMember(const std::string& key) const;
    std::vector<std::string> mapGetKeys() const;
    ModelValue mapRemove(const std::string& key, bool synchronise);
    std::list<ModelValue> mapFind(const std::string& key) const;
    std::list<ModelValue> mapFind(const std::string& key, const ModelValue& node) const;

    unsigned int arrayAppend(const ModelValue& value, bool synchronise);
    void arrayInsert(unsigned int index, const ModelValue& value, bool synchronise);
    ModelValue& arrayModify(unsigned int index, const ModelValue& value, bool synchronise);
    ModelValue& arrayGet(unsigned int index);
    unsigned int arrayCount() const;
    ModelValue arrayRemove(unsigned int index, int count, bool synchronise);
    /// The number of elements that can be reached; arrayCount() is what the text shows.
    size_t listSize() const { return m_elements.size(); }

    ModelValue& addressMapSet(const std::string& key, const ModelValue& value);
    ModelValue& addressMapGet(const std::string& key);
    bool addressMapIsMember(const std::string& key) const;
    std::vector<std::string> addressMapGetKeys() const;
    void addressMapRemove(const std::string& key);
    std::list<ModelValue> addressMapFind(const std::string& key) const;
    std::list<ModelValue> addressMapFind(const std::string& key, const ModelValue& node) const;
    unsigned int addressArrayAppend(const ModelValue& value);
    void addressArrayInsert(unsigned int index, const ModelValue& value);
    ModelValue& addressArrayModify(unsigned int index, const ModelValue& value);
    ModelValue& addressArrayGet(unsigned int index);
    void addressArrayRemove(unsigned int index, int count);
    unsigned int addressArrayCount() const;

    void synchJsonData();
    void synchPreDataPoint();
    void synPreDataValue(ModelValue* start);
    void dataValueFind(const std::string& key, const ModelValue& node,
                       std::list<ModelValue>* list) const;

    /// The text as UTF-8, with its line feed.
    std::string text(ENUM_STYLE style) const;
    static bool parse(const std::string& text, ModelValue& out);
    static ModelValue fromJson(const Json::Value& json);

    static ModelValue& null();
    static ModelValue& referToMemberNull();

private:
    using Child = std::unique_ptr<ModelValue>;

    bool isOrdinaryContainer() const;
    void requireNoAddress() const;
    void requireNoAddress(const ModelValue& newElement) const;
    bool indexMisses(unsigned int index) const;
    bool addressIndexMisses(unsigned int index) const;
    std::vector<ModelValue*> children() const;
    Child held(const ModelValue& value);

    std::vector<Child> m_elements;          // ARRAY_VALUE and ADDRESS_ARRAY_VALUE
    std::map<std::string, Child> m_members; // MAP_VALUE and ADDRESS_MAP_VALUE
    Json::Value m_mirror;
    const void* m_address = nullptr;
    ENUM_VALUE_TYPE m_kind = NULL_VALUE;
    ModelValue* m_parent = nullptr;
};

/// The text of a mirror in either style, with its line feed.
std::string modelText(const Json::Value& mirror, ENUM_STYLE style);

/// Reads JSON text and applies the rule for the kinds of numbers. False on a syntax error.
bool modelReadJson(const std::string& text, Json::Value* root);

#endif
