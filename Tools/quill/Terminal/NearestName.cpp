// SPDX-License-Identifier: Apache-2.0

#include "Terminal/NearestName.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "Terminal/Text.h"

namespace QuillTool {

namespace {

/// The number of changes that make @p b of @p a, by the rows of the matrix of Damerau and Levenshtein.
std::size_t countChanges(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before;
    std::vector<std::size_t> above(b.size() + 1);
    for (std::size_t column = 0; column <= b.size(); ++column) {
        above[column] = column;
    }
    for (std::size_t row = 1; row <= a.size(); ++row) {
        std::vector<std::size_t> present(b.size() + 1, row);
        for (std::size_t column = 1; column <= b.size(); ++column) {
            const std::size_t replaced = above[column - 1] + (a[row - 1] == b[column - 1] ? 0 : 1);
            present[column] = std::min({replaced, above[column] + 1, present[column - 1] + 1});
            if (row > 1 && column > 1 && a[row - 1] == b[column - 2] && a[row - 2] == b[column - 1]) {
                present[column] = std::min(present[column], before[column - 2] + 1);
            }
        }
        before = std::exchange(above, std::move(present));
    }
    return above.back();
}

} // namespace

std::string nearestName(std::string_view text, const std::vector<std::string>& names) {
    const std::string wanted = inCapitals(std::string(text));
    std::size_t fewest = std::max<std::size_t>(1, wanted.size() / 3) + 1;
    std::string nearest;
    for (const std::string& name : names) {
        const std::size_t changes = name.size() > 2 * wanted.size() || wanted.size() > 2 * name.size()
                                        ? fewest // far, at any length of the text
                                        : countChanges(wanted, inCapitals(name));
        if (changes < fewest) {
            fewest = changes;
            nearest = name;
        }
    }
    return nearest;
}

} // namespace QuillTool
