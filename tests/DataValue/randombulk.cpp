#include "randomworld.h"

// Operations on many values at once: those that leave trees packed, and those that large maps are
// made and taken apart by.

const std::vector<RandomWorld::NamedOperation>& RandomWorld::bulkOperations()
{
    using W = RandomWorld;
    static const std::vector<NamedOperation> all{
        {"fill", &W::fillMap},
        {"fill", &W::fillMap},
        {"remove many", &W::removeMany},
        {"remove many", &W::removeMany},
        {"parse own text", &W::parseOwnText},
        {"copy within the pool", &W::copyPool},
    };
    return all;
}

/// What is read without comments is packed.
void RandomWorld::parseOwnText(NodePair& node)
{
    const std::string text = node.model->text(FAST_STYLE);
    const bool expected = ModelValue::parse(text, *node.model);
    expectSame("parseToDataValue", CDataValue::parseToDataValue(text.c_str(), *node.real),
               expected);
}

void RandomWorld::copyPool(NodePair&)
{
    if (!m_mayKeep) // the node may lie in what is replaced
        return;
    const auto size = static_cast<unsigned int>(m_pool.size());
    const unsigned int from = m_dice.below(size);
    const unsigned int to = m_dice.below(size);
    note("pool" + std::to_string(from) + " to pool" + std::to_string(to));
    m_pool[to].model = m_pool[from].model;
    m_pool[to].real = m_pool[from].real;
}

/// Two texts that differ in one digit at most. They are read, so both values are packed.
void RandomWorld::compareAlmostEqual(NodePair&)
{
    const std::string text =
        "[" + randomJsonNumber(m_dice) + "," + randomJson(m_dice, 3, false) + "]";
    std::string other = text;
    const std::size_t digit = text.find_first_of("123456789", m_dice.below(4));
    if (digit != std::string::npos)
        other[digit] = static_cast<char>('1' + m_dice.below(9));
    note(text + " and " + other);
    std::array<ValuePair, 2> pairs;
    const bool read =
        ModelValue::parse(text, pairs[0].model) && ModelValue::parse(other, pairs[1].model);
    if (!read)
        return;
    CDataValue::parseToDataValue(text.c_str(), pairs[0].real);
    CDataValue::parseToDataValue(other.c_str(), pairs[1].real);
    expectSame("isEqual", pairs[0].real.isEqual(pairs[1].real),
               pairs[0].model.isEqual(pairs[1].model));
}

/// Adds enough members for several pages of their index, not in the order of their keys.
void RandomWorld::fillMap(NodePair& node)
{
    const bool mayFill = node.model->type() == NULL_VALUE || node.model->type() == MAP_VALUE;
    if (!mayFill || node.model->isHasAddressType())
        return;
    const unsigned int count = 300 + m_dice.below(200);
    static const std::array<unsigned int, 4> strides{1, 7, 333, 999}; // not dividing 1000
    const unsigned int stride = m_dice.of(strides);
    note(std::to_string(count) + " members");
    for (unsigned int i = 0; i < count; ++i) {
        const std::string key = "m" + std::to_string(i * stride % 1000);
        const bool flag = i + 1 == count && m_dice.oneIn(2);
        node.model->mapSet(key, ModelValue(static_cast<int>(i)), flag);
        node.real->mapSet(key.c_str(), CDataValue(static_cast<int>(i)), flag);
    }
}

/// Removes neighbours, up to all.
void RandomWorld::removeMany(NodePair& node)
{
    if (node.model->type() != MAP_VALUE || node.model->isHasAddressType())
        return;
    const std::vector<std::string> keys = node.model->mapGetKeys();
    if (keys.empty())
        return;
    const auto size = static_cast<unsigned int>(keys.size());
    const unsigned int first = m_dice.below(size);
    const unsigned int end = first + 1 + m_dice.below(size - first);
    note(std::to_string(end - first) + " members from " + std::to_string(first));
    for (unsigned int i = first; i < end; ++i) {
        const bool flag = i + 1 == end && m_dice.oneIn(2);
        if (keys[i].find('\0') != std::string::npos)
            continue;
        node.model->mapRemove(keys[i], flag);
        node.real->mapRemove(keys[i].c_str(), flag);
    }
}
