#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

namespace kr {

/// Asks the system to back the range with 2 MiB pages where whole ones fit. Fresh memory in 4 KiB pages costs
/// about as much to touch for the first time as the work that is done on it. A hint: nothing happens where it
/// is refused.
void AdviseLargePages(void* begin, std::size_t bytes);

/// Reserves room for @p count elements, on large pages where they help.
template<class T>
void ReserveLarge(std::vector<T>& list, std::size_t count)
{
    list.reserve(count);
    AdviseLargePages(list.data(), list.capacity() * sizeof(T));
}

/// Scratch memory of fixed size on large pages, zero throughout when new; its pages are real once they are
/// touched.
template<class T>
class Scratch {
    static_assert(std::is_trivially_copyable_v<T>, "zero bytes must be a value, nothing is constructed");

public:
    Scratch() = default;
    explicit Scratch(std::size_t count);
    Scratch(Scratch&& other) noexcept { swap(other); }
    Scratch& operator=(Scratch&& other) noexcept
    {
        swap(other);
        return *this;
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch();

    T& operator[](std::size_t i) { return m_data[i]; }
    const T& operator[](std::size_t i) const { return m_data[i]; }
    T* data() { return m_data; }
    const T* data() const { return m_data; }
    std::size_t size() const { return m_count; }
    T* begin() { return m_data; }
    T* end() { return m_data + m_count; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_count; }

    /// Hands the memory over for other content of the same size; what it holds means nothing then.
    template<class Other>
    Scratch<Other> ReuseAs() &&
    {
        static_assert(sizeof(Other) == sizeof(T) && alignof(Other) <= alignof(std::max_align_t),
                      "fits in place");
        Scratch<Other> other;
        other.m_data = static_cast<Other*>(static_cast<void*>(std::exchange(m_data, nullptr)));
        other.m_count = std::exchange(m_count, 0);
        return other;
    }

    void swap(Scratch& other) noexcept
    {
        std::swap(m_data, other.m_data);
        std::swap(m_count, other.m_count);
    }

private:
    template<class>
    friend class Scratch;

    T* m_data = nullptr;
    std::size_t m_count = 0;
};

namespace detail {
/// Zeroed memory; throws std::bad_alloc. Large requests are whole pages of their own.
void* AllocateScratch(std::size_t bytes);
void FreeScratch(void* memory, std::size_t bytes) noexcept;
} // namespace detail

template<class T>
Scratch<T>::Scratch(std::size_t count)
    : m_data(static_cast<T*>(detail::AllocateScratch(count * sizeof(T)))), m_count(count)
{}

template<class T>
Scratch<T>::~Scratch()
{
    detail::FreeScratch(m_data, m_count * sizeof(T));
}

} // namespace kr
