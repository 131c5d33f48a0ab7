#pragma once

#include <atomic>
#include <mutex>
#include <utility>

namespace kr {

/// A value that is built at the first request; any number of threads may ask at once, one of them builds.
/// Copying and moving take the value along if it is there; they and Reset() must not run beside anything
/// else.
template<class Value>
class OnDemand {
public:
    OnDemand() = default;
    OnDemand(const OnDemand& other) { CopyFrom(other); }
    OnDemand(OnDemand&& other) noexcept { MoveFrom(other); }
    OnDemand& operator=(const OnDemand& other)
    {
        if (this != &other)
            CopyFrom(other);
        return *this;
    }
    OnDemand& operator=(OnDemand&& other) noexcept
    {
        if (this != &other)
            MoveFrom(other);
        return *this;
    }
    ~OnDemand() = default;

    /// The value; @p build makes it at the first request. When it throws, the next request tries again.
    template<class Build>
    const Value& Get(Build build) const
    {
        if (!m_isBuilt.load(std::memory_order_acquire)) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!m_isBuilt.load(std::memory_order_relaxed)) {
                m_value = build();
                m_isBuilt.store(true, std::memory_order_release);
            }
        }
        return m_value;
    }

    /// Gives the value instead of building it.
    void Set(Value value)
    {
        m_value = std::move(value);
        m_isBuilt.store(true, std::memory_order_release);
    }

    void Reset()
    {
        m_value = Value();
        m_isBuilt.store(false, std::memory_order_release);
    }

private:
    void CopyFrom(const OnDemand& other)
    {
        // The source may be building the value for another reader at this moment.
        const std::lock_guard<std::mutex> lock(other.m_mutex);
        m_value = other.m_value;
        m_isBuilt.store(other.m_isBuilt.load(std::memory_order_relaxed), std::memory_order_release);
    }
    void MoveFrom(OnDemand& other)
    {
        m_value = std::move(other.m_value);
        m_isBuilt.store(other.m_isBuilt.load(std::memory_order_relaxed), std::memory_order_release);
        other.Reset();
    }

    mutable std::mutex m_mutex;
    mutable std::atomic<bool> m_isBuilt{false};
    mutable Value m_value{};
};

} // namespace kr
