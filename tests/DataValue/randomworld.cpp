#include "randomworld.h"

namespace {

/// After this number of steps, all values that a reference can be had of are compared.
constexpr unsigned int stepsPerDeepLook = 12;

std::string child(const std::string& name, const std::string& step)
{
    return name + "/" + step;
}

} // namespace

RandomWorld::RandomWorld(Size largestTree)
    : m_largestTree(largestTree)
{
    CDataValue::referToMemberNull();
    ModelValue::referToMemberNull();
}

bool RandomWorld::run(quint32 step)
{
    m_dice = Dice(step);
    m_mismatch.clear();
    m_looksDeeply = m_dice.oneIn(stepsPerDeepLook);
    NodePair node = pickNode();
    m_description.clear();
    // Several operations on one reference reach what no look-up reaches any more, such as a null
    // value inside an ordinary map that became an address map.
    for (unsigned int left = m_dice.oneIn(4) ? 3 : 1; left > 0; --left) {
        const NamedOperation& operation = pickOperation();
        m_description += std::string(m_description.empty() ? "" : "\n   then ") + operation.name +
                         " on " + node.name;
        m_mayKeep = left == 1; // a kept result could take the place of the node
        (this->*operation.apply)(node);
        if (left > 1 && node.place != NodePair::SharedNull && m_dice.oneIn(2))
            descend(node);
    }

    for (ValuePair& pair : m_pool) {
        if (pair.model.treeSize() > m_largestTree) {
            pair.real = CDataValue(NULL_VALUE);
            pair.model = ModelValue(NULL_VALUE);
        }
    }
    for (size_t i = 0; i < m_pool.size(); ++i)
        compare("pool" + std::to_string(i), m_pool[i].real, m_pool[i].model);
    compare("m_sNull", CDataValue::m_sNull, ModelValue::null());
    return m_mismatch.empty();
}

// Choosing

const RandomWorld::NamedOperation& RandomWorld::pickOperation()
{
    const bool isBulk = m_largestTree == Large && m_dice.oneIn(2);
    const std::vector<NamedOperation>& all = isBulk ? bulkOperations() : operations();
    return all[m_dice.below(static_cast<unsigned int>(all.size()))];
}

NodePair RandomWorld::pickNode()
{
    if (m_dice.oneIn(40))
        return {&CDataValue::m_sNull, &ModelValue::null(), NodePair::SharedNull, "m_sNull"};
    const unsigned int slot = m_dice.below(static_cast<unsigned int>(m_pool.size()));
    NodePair node{&m_pool[slot].real, &m_pool[slot].model, NodePair::PoolRoot,
                  "pool" + std::to_string(slot)};
    while (!m_dice.oneIn(3) && descend(node)) {
    }
    return node;
}

/// Goes to a random child that a reference can be had of.
bool RandomWorld::descend(NodePair& node)
{
    const bool readable = !node.model->isHasAddressType();
    const ENUM_VALUE_TYPE kind = node.model->type();
    if ((kind == MAP_VALUE && readable) || kind == ADDRESS_MAP_VALUE) {
        const bool ordinary = kind == MAP_VALUE;
        const auto keys = ordinary ? node.model->mapGetKeys() : node.model->addressMapGetKeys();
        if (keys.empty())
            return false;
        const std::string key = keys[m_dice.below(static_cast<unsigned int>(keys.size()))];
        if (key.find('\0') != std::string::npos)
            return false;
        node.real =
            ordinary ? &node.real->mapGet(key.c_str()) : &node.real->addressMapGet(key.c_str());
        node.model = ordinary ? &node.model->mapGet(key) : &node.model->addressMapGet(key);
        node.name = child(node.name, key);
    } else if ((kind == ARRAY_VALUE && readable) || kind == ADDRESS_ARRAY_VALUE) {
        const auto size = static_cast<unsigned int>(node.model->listSize());
        if (size == 0)
            return false;
        const bool ordinary = kind == ARRAY_VALUE;
        const unsigned int index = ordinary ? m_dice.below(size) : 0;
        node.real = ordinary ? &node.real->arrayGet(index) : &node.real->addressArrayGet(index);
        node.model = ordinary ? &node.model->arrayGet(index) : &node.model->addressArrayGet(index);
        node.name = child(node.name, std::to_string(index));
    } else {
        return false;
    }
    node.place = NodePair::Child;
    return true;
}

/// A value to store or to compare with: a node of the pool, which may be part of the target or
/// hold it, or a fresh one.
NodePair RandomWorld::pickValue()
{
    NodePair value;
    if (m_dice.oneIn(2)) {
        value = pickNode();
    } else {
        fillArgument();
        value = {&m_argument.real, &m_argument.model, NodePair::Temporary,
                 m_argument.model.type() == ADDRESS_VALUE ? "an address"
                                                          : m_argument.model.text(FAST_STYLE)};
    }
    note("value " + value.name);
    return value;
}

void RandomWorld::fillArgument()
{
    static const int pointee = 0;
    const auto set = [this](const auto& content) {
        m_argument.real = CDataValue(content);
        m_argument.model = ModelValue(content);
    };
    static const std::array<double, 6> reals{0.0, -0.5, 1.0 / 3, 1e20, 123456789012345678.0, 1e-5};
    switch (m_dice.below(10)) {
    case 0:
        set(static_cast<int>(m_dice.any()));
        break;
    case 1:
        set(static_cast<unsigned int>(m_dice.any()));
        break;
    case 2:
        set(m_dice.of(reals));
        break;
    case 3:
        set(m_dice.oneIn(2));
        break;
    case 4:
        set(pickKey());
        break;
    case 5:
        set(static_cast<const void*>(&pointee));
        break;
    case 6:
    case 7:
        set(static_cast<ENUM_VALUE_TYPE>(m_dice.below(11)));
        break;
    default:
        const std::string text = randomJson(m_dice, 3, m_dice.oneIn(2));
        expectSame("parseToDataValue", CDataValue::parseToDataValue(text.c_str(), m_argument.real),
                   ModelValue::parse(text.c_str(), m_argument.model));
    }
}

std::string RandomWorld::pickKey()
{
    static const std::array<std::string, 7> keys{"a", "b", "B", "k", "", "\xc3\xa9", "missing"};
    const std::string key = m_dice.of(keys);
    note("key \"" + key + "\"");
    return key;
}

/// Mostly an index within the list, now and then one just or far outside.
unsigned int RandomWorld::pickIndex(const NodePair& node)
{
    const auto size = static_cast<unsigned int>(node.model->listSize());
    unsigned int index = m_dice.below(m_dice.oneIn(3) ? size + 4 : size + 1);
    if (m_dice.oneIn(30))
        index = 4294967295u - m_dice.below(3);
    note("index " + std::to_string(index));
    return index;
}

int RandomWorld::pickCount()
{
    static const std::array<int, 8> counts{-1, 0, 1, 1, 2, 3, 2147483647, -2147483647 - 1};
    const int count = m_dice.of(counts);
    note("count " + std::to_string(count));
    return count;
}

bool RandomWorld::pickFlag()
{
    const bool flag = m_dice.oneIn(4);
    note(flag ? "synchronised" : "not synchronised");
    return flag;
}

// Comparing

void RandomWorld::expectSameNode(const std::string& what, CDataValue& real, ModelValue& model)
{
    expectSame(what + " is m_sNull", &real == &CDataValue::m_sNull, &model == &ModelValue::null());
    compare(what, real, model);
}

void RandomWorld::compare(const std::string& name, CDataValue& real, ModelValue& model)
{
    compareTexts(name, real, model);
    if (m_looksDeeply && m_mismatch.empty())
        compareTrees(name, real, model);
}

void RandomWorld::compareTexts(const std::string& name, const CDataValue& real,
                               const ModelValue& model)
{
    expectSame(name + " kind", real.type(), model.type());
    for (const ENUM_STYLE style : {FAST_STYLE, STYLED_STYLE}) {
        const QString expected = QString::fromStdString(model.text(style));
        expectSame(name + (style == FAST_STYLE ? " compact text" : " styled text"),
                   real.parseToQString(style).toStdString(), expected.toStdString());
    }
    if (model.type() == MAP_VALUE && !model.isHasAddressType())
        expectSame(name + " keys", real.mapGetKeys(), model.mapGetKeys());
    expectSame(name + " getSize", real.getSize(), model.getSize());
    expectSame(name + " isEmpty", real.isEmpty(), model.isEmpty());
    expectSame(name + " isHasAddressType", real.isHasAddressType(), model.isHasAddressType());
}

void RandomWorld::compareTrees(const std::string& name, CDataValue& real, ModelValue& model)
{
    compareTexts(name, real, model);
    if (!m_mismatch.empty())
        return;
    compareAddressContainer(name, real, model);
    if (model.isHasAddressType()) {
        expectSame(name + " asAddress", real.asAddress(), model.asAddress());
        return;
    }
    if (model.type() == MAP_VALUE)
        compareMap(name, real, model);
    else if (model.type() == ARRAY_VALUE)
        compareArray(name, real, model);
    else
        compareScalars(name, real, model);
}

void RandomWorld::compareScalars(const std::string& name, const CDataValue& real,
                                 const ModelValue& model)
{
    expectSame(name + " asInt", real.asInt(), model.asInt());
    expectSame(name + " asUInt", real.asUInt(), model.asUInt());
    expectSame(name + " asDouble", real.asDouble(), model.asDouble());
    expectSame(name + " asBool", real.asBool(), model.asBool());
    expectSame(name + " asQString", real.asQString().toStdString(),
               QString::fromUtf8(model.asBytes().c_str()).toStdString());
}

void RandomWorld::compareMap(const std::string& name, CDataValue& real, ModelValue& model)
{
    const std::vector<std::string> keys = model.mapGetKeys();
    for (const std::string& key : keys) {
        if (key.find('\0') != std::string::npos || !m_mismatch.empty())
            continue;
        expectSame(name + " mapIsMember", real.mapIsMember(key.c_str()), true);
        compareTrees(child(name, key), real.mapGet(key.c_str()), model.mapGet(key));
    }
    expectSame(name + " mapIsMember", real.mapIsMember("k"), model.mapIsMember("k"));
}

void RandomWorld::compareArray(const std::string& name, CDataValue& real, ModelValue& model)
{
    expectSame(name + " arrayCount", real.arrayCount(), model.arrayCount());
    for (unsigned int i = 0; i < model.listSize() && m_mismatch.empty(); ++i)
        compareTrees(child(name, std::to_string(i)), real.arrayGet(i), model.arrayGet(i));
}

void RandomWorld::compareAddressContainer(const std::string& name, CDataValue& real,
                                          ModelValue& model)
{
    const std::vector<std::string> keys = model.addressMapGetKeys();
    expectSame(name + " address keys", real.addressMapGetKeys(), keys);
    for (const std::string& key : keys) {
        expectSame(name + " addressMapIsMember", real.addressMapIsMember(key.c_str()), true);
        compareTrees(child(name, key), real.addressMapGet(key.c_str()), model.addressMapGet(key));
    }
    expectSame(name + " addressArrayCount", real.addressArrayCount(), model.addressArrayCount());
    if (model.type() == ADDRESS_ARRAY_VALUE && model.listSize() > 0)
        compareTrees(child(name, "0"), real.addressArrayGet(0), model.addressArrayGet(0));
}
