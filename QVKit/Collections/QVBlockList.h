#pragma once

#include <QtCore/QList>
#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

/**
 * A sequence kept in blocks of at most maximumBlockLength elements, with the
 * start index of every block. Inserting or removing in the middle moves the
 * elements of one block and shifts the block starts after it, where one flat
 * array would move every element behind the edit; reading by index is a
 * binary search over the block starts.
 *
 * This is the storage of QVSortedArray, whose users (eviction orders above
 * all) insert and remove anywhere in long sequences.
 *
 * A position is a (block, offset) pair. The end position lies one past the
 * last element of the last block, and is {0, 0} when the list is empty.
 * Blocks are never empty. Indices and positions are checked by the callers.
 */
template <typename T>
class QVBlockList
{
public:
    /** A block splits in two when it grows past this length. */
    static constexpr qsizetype maximumBlockLength = 256;

    struct Position
    {
        qsizetype block = 0;
        qsizetype offset = 0;
    };

    using Block = std::vector<T>;

    /** A forward iterator over the elements in order; read-only. */
    class const_iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T *;
        using reference = const T &;

        const_iterator() = default;

        reference operator*() const { return (*m_blocks)[m_block][m_offset]; }
        pointer operator->() const { return &**this; }

        const_iterator &operator++()
        {
            if (++m_offset == (*m_blocks)[m_block].size()) {
                ++m_block;
                m_offset = 0;
            }
            return *this;
        }

        const_iterator operator++(int)
        {
            const_iterator previous = *this;
            ++*this;
            return previous;
        }

        friend bool operator==(const const_iterator &a, const const_iterator &b)
        {
            return a.m_block == b.m_block && a.m_offset == b.m_offset;
        }

    private:
        friend class QVBlockList;
        const_iterator(const std::vector<Block> *blocks, size_t block, size_t offset)
            : m_blocks(blocks), m_block(block), m_offset(offset)
        {
        }

        const std::vector<Block> *m_blocks = nullptr;
        size_t m_block = 0;
        size_t m_offset = 0;
    };

    QVBlockList() = default;

    qsizetype size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }

    qsizetype blockCount() const { return qsizetype(m_blocks.size()); }
    const Block &block(qsizetype index) const { return m_blocks[size_t(index)]; }

    /** Prepares the first block for this many elements (at most one block's worth). */
    void reserve(qsizetype capacity)
    {
        if (m_blocks.empty() && capacity > 0) {
            m_blocks.emplace_back().reserve(size_t(std::min(capacity, maximumBlockLength + 1)));
            m_starts.push_back(0);
        }
    }

    Position endPosition() const
    {
        if (m_size == 0)
            return {};
        return {blockCount() - 1, qsizetype(m_blocks.back().size())};
    }

    qsizetype indexOfPosition(Position position) const
    {
        return m_size == 0 ? 0 : m_starts[size_t(position.block)] + position.offset;
    }

    /** The position of an index in 0...size; size gives the end position. */
    Position positionOfIndex(qsizetype index) const
    {
        if (index >= m_size)
            return endPosition();
        const auto after = std::upper_bound(m_starts.cbegin(), m_starts.cend(), index);
        const qsizetype block = qsizetype(after - m_starts.cbegin()) - 1;
        return {block, index - m_starts[size_t(block)]};
    }

    const T &at(Position position) const { return m_blocks[size_t(position.block)][size_t(position.offset)]; }
    const T &at(qsizetype index) const { return at(positionOfIndex(index)); }
    const T &first() const { return m_blocks.front().front(); }
    const T &last() const { return m_blocks.back().back(); }

    void clear()
    {
        m_blocks.clear();
        m_starts.clear();
        m_size = 0;
    }

    /** Inserts before the element at the position (at the end for the end position). */
    void insert(Position position, T value)
    {
        if (m_blocks.empty()) {
            m_blocks.emplace_back();
            m_starts.push_back(0);
            position = {};
        }
        Block &target = m_blocks[size_t(position.block)];
        target.insert(target.begin() + position.offset, std::move(value));
        ++m_size;
        shiftStartsAfter(position.block, 1);
        if (qsizetype(target.size()) > maximumBlockLength)
            splitBlock(position.block);
    }

    void insert(qsizetype index, T value) { insert(positionOfIndex(index), std::move(value)); }

    /** Removes length elements from the position on; they must exist. */
    void remove(Position position, qsizetype length)
    {
        if (length <= 0)
            return;
        const size_t firstEdited = size_t(position.block);
        size_t block = firstEdited;
        size_t offset = size_t(position.offset);
        m_size -= length;
        while (length > 0) {
            Block &target = m_blocks[block];
            const qsizetype taken = std::min(length, qsizetype(target.size() - offset));
            target.erase(target.begin() + qsizetype(offset), target.begin() + qsizetype(offset) + taken);
            length -= taken;
            if (target.empty()) {
                m_blocks.erase(m_blocks.begin() + qsizetype(block));
                m_starts.erase(m_starts.begin() + qsizetype(block));
            } else {
                ++block;
            }
            offset = 0;
        }
        mergeAround(firstEdited);
        recomputeStartsFrom(firstEdited);
    }

    void remove(qsizetype index, qsizetype length) { remove(positionOfIndex(index), length); }

    /** Replaces the contents, keeping the elements' order. */
    void assign(std::vector<T> elements)
    {
        clear();
        m_size = qsizetype(elements.size());
        // Half-full blocks leave room for insertions on both sides before a split.
        constexpr size_t chunk = size_t(maximumBlockLength / 2);
        const size_t total = elements.size();
        if (total <= size_t(maximumBlockLength)) {
            if (total > 0) {
                m_blocks.push_back(std::move(elements));
                m_starts.push_back(0);
            }
            return;
        }
        m_blocks.reserve(total / chunk + 1);
        m_starts.reserve(total / chunk + 1);
        for (size_t from = 0; from < total; from += chunk) {
            const size_t to = std::min(total, from + chunk);
            m_starts.push_back(qsizetype(from));
            m_blocks.emplace_back(std::make_move_iterator(elements.begin() + qsizetype(from)),
                                  std::make_move_iterator(elements.begin() + qsizetype(to)));
        }
    }

    /** Moves every element out, in order, leaving the list empty. */
    std::vector<T> takeAll()
    {
        std::vector<T> elements;
        if (m_blocks.size() == 1) {
            elements = std::move(m_blocks.front());
        } else {
            elements.reserve(size_t(m_size));
            for (Block &source : m_blocks)
                std::move(source.begin(), source.end(), std::back_inserter(elements));
        }
        clear();
        return elements;
    }

    /** The elements of [index, index + length) as a list. */
    QList<T> mid(qsizetype index, qsizetype length) const
    {
        QList<T> result;
        result.reserve(length);
        Position position = positionOfIndex(index);
        while (length > 0) {
            const Block &source = m_blocks[size_t(position.block)];
            const qsizetype taken = std::min(length, qsizetype(source.size()) - position.offset);
            for (qsizetype offset = position.offset; offset < position.offset + taken; ++offset)
                result.append(source[size_t(offset)]);
            length -= taken;
            position = {position.block + 1, 0};
        }
        return result;
    }

    QList<T> toList() const { return mid(0, m_size); }

    const_iterator begin() const { return const_iterator(&m_blocks, 0, 0); }
    const_iterator end() const { return const_iterator(&m_blocks, m_blocks.size(), 0); }

private:
    void shiftStartsAfter(qsizetype block, qsizetype delta)
    {
        for (size_t index = size_t(block) + 1; index < m_starts.size(); ++index)
            m_starts[index] += delta;
    }

    // Blocks from this index on may have moved or changed length; the ones
    // before it are as they were.
    void recomputeStartsFrom(size_t block)
    {
        qsizetype start = block == 0 ? 0 : m_starts[block - 1] + qsizetype(m_blocks[block - 1].size());
        for (size_t index = block; index < m_blocks.size(); ++index) {
            m_starts[index] = start;
            start += qsizetype(m_blocks[index].size());
        }
    }

    void splitBlock(qsizetype block)
    {
        Block &full = m_blocks[size_t(block)];
        const qsizetype half = qsizetype(full.size()) / 2;
        Block tail(std::make_move_iterator(full.begin() + half), std::make_move_iterator(full.end()));
        full.erase(full.begin() + half, full.end());
        const qsizetype tailStart = m_starts[size_t(block)] + half;
        m_blocks.insert(m_blocks.begin() + block + 1, std::move(tail));
        m_starts.insert(m_starts.begin() + block + 1, tailStart);
    }

    // After removals a short block joins a neighbour when both fit in half a
    // block, so the number of blocks stays proportional to the element count.
    void mergeAround(size_t block)
    {
        constexpr size_t shortLength = size_t(maximumBlockLength / 4);
        constexpr size_t joinedLength = size_t(maximumBlockLength / 2);
        // The edited block with its right neighbour, else with its left one.
        for (const size_t candidate : {block, block - 1}) {
            if (candidate == size_t(-1) || candidate + 1 >= m_blocks.size())
                continue;
            Block &left = m_blocks[candidate];
            Block &right = m_blocks[candidate + 1];
            if ((left.size() >= shortLength && right.size() >= shortLength) ||
                left.size() + right.size() > joinedLength)
                continue;
            left.insert(left.end(), std::make_move_iterator(right.begin()), std::make_move_iterator(right.end()));
            m_blocks.erase(m_blocks.begin() + qsizetype(candidate) + 1);
            m_starts.erase(m_starts.begin() + qsizetype(candidate) + 1);
            return;
        }
    }

    std::vector<Block> m_blocks;
    std::vector<qsizetype> m_starts;
    qsizetype m_size = 0;
};
