#pragma once

#include <algorithm>
#include <functional>
#include <vector>

/// Sorting of record arrays by one property.
class KVRArrayUtil {
public:
    KVRArrayUtil() = delete;

    /// A sorted copy, by the value the property accessor returns; equal keys
    /// keep their order.
    template <typename T, typename Property>
    static std::vector<T> sortArray(std::vector<T> array, Property property, bool ascending) {
        std::stable_sort(array.begin(), array.end(), [&](const T& a, const T& b) {
            return ascending ? std::invoke(property, a) < std::invoke(property, b)
                             : std::invoke(property, b) < std::invoke(property, a);
        });
        return array;
    }
};
