#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

namespace kelmora {

// Lists that say so where they cannot grow. Nothing here throws: a host without memory may have none for an exception
// either. Functions that are those of the standard's lists bear their names.

/// Up to `most` elements, in place.
template <class T, std::size_t most>
class FixedList {
public:
    FixedList() = default;
    explicit FixedList(std::size_t count) { resize(count); }

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    T& operator[](std::size_t i) { return m_elements[i]; }
    const T& operator[](std::size_t i) const { return m_elements[i]; }
    T* begin() { return m_elements.data(); }
    T* end() { return begin() + m_size; }
    const T* begin() const { return m_elements.data(); }
    const T* end() const { return begin() + m_size; }

    /// False, and nothing added, to a full list.
    bool push_back(T element)
    {
        if (m_size == most)
            return false;
        m_elements[m_size++] = std::move(element);
        return true;
    }

    /// What goes is reset; what comes is as if made anew. `count` is cut to what there is room for.
    void resize(std::size_t count)
    {
        const std::size_t kept = std::min(count, m_size);
        std::fill(begin() + kept, end(), T());
        m_size = std::min(count, most);
    }

    void clear()
    {
        for (T& element : *this)
            element = T();
        m_size = 0;
    }

private:
    std::array<T, most> m_elements{};
    std::size_t m_size = 0;
};

/// As many elements as there is memory for.
template <class T>
class GrowingList {
    static_assert(alignof(T) <= alignof(std::max_align_t));

public:
    GrowingList() = default;
    GrowingList(GrowingList&& other) noexcept { swap(other); }

    /// Empty where there is no memory.
    GrowingList(const GrowingList& other)
    {
        if (!reserve(other.size()))
            return;
        for (const T& element : other)
            Append(element);
    }

    GrowingList& operator=(GrowingList other) noexcept
    {
        swap(other);
        return *this;
    }

    ~GrowingList()
    {
        truncate(0);
        std::free(m_elements);
    }

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    T& operator[](std::size_t i) { return m_elements[i]; }
    const T& operator[](std::size_t i) const { return m_elements[i]; }
    T* begin() { return m_elements; }
    T* end() { return m_elements + m_size; }
    const T* begin() const { return m_elements; }
    const T* end() const { return m_elements + m_size; }

    /// Room for `count` elements in all. False, and everything as it was, without memory.
    [[nodiscard]] bool reserve(std::size_t count)
    {
        if (count <= m_room)
            return true;
        if (count > PTRDIFF_MAX / sizeof(T))
            return false;
        // Not operator new: also where it is not to throw it may do so inside.
        T* const elements = static_cast<T*>(std::malloc(count * sizeof(T)));
        if (!elements)
            return false;
        for (std::size_t i = 0; i < m_size; ++i) {
            new (elements + i) T(std::move(m_elements[i]));
            m_elements[i].~T();
        }
        std::free(m_elements);
        m_elements = elements;
        m_room = count;
        return true;
    }

    /// False, and nothing added, without memory.
    [[nodiscard]] bool push_back(T element)
    {
        if (m_size == m_room && !reserve(std::max<std::size_t>(8, 2 * m_room)))
            return false;
        Append(std::move(element));
        return true;
    }

    /// The first `count` elements stay, of as many at least.
    void truncate(std::size_t count)
    {
        while (m_size > count)
            m_elements[--m_size].~T();
    }

    void swap(GrowingList& other) noexcept
    {
        std::swap(m_elements, other.m_elements);
        std::swap(m_size, other.m_size);
        std::swap(m_room, other.m_room);
    }

private:
    template <class From>
    void Append(From&& from)
    {
        new (m_elements + m_size) T(std::forward<From>(from));
        ++m_size;
    }

    T* m_elements = nullptr;
    std::size_t m_size = 0;
    std::size_t m_room = 0;
};

} // namespace kelmora
