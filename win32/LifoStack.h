// A stack of resources that are released in the reverse order of their acquisition.

#pragma once

#include <deque>
#include <utility>

// std::stack does not define the order in which it destroys its elements. Here the newest one goes first, also when an
// exception unwinds the owner: nested searches close innermost first.
template <typename T>
class LifoStack {
public:
    LifoStack() = default;
    ~LifoStack()
    {
        while (!m_elements.empty()) {
            m_elements.pop_back();
        }
    }
    LifoStack(const LifoStack&) = delete;
    LifoStack& operator=(const LifoStack&) = delete;

    [[nodiscard]] bool IsEmpty() const noexcept { return m_elements.empty(); }
    T& Top() noexcept { return m_elements.back(); }
    void Push(T element) { m_elements.push_back(std::move(element)); }
    void Pop() { m_elements.pop_back(); }

    // Oldest first.
    auto begin() noexcept { return m_elements.begin(); }
    auto end() noexcept { return m_elements.end(); }

private:
    std::deque<T> m_elements; // references stay valid while elements are pushed
};
