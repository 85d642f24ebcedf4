#pragma once

namespace kelmora::px {

/// The first of begin .. end - 1 for which `holds`, which stays true once it is; `end` when it never is.
template <class Predicate>
int FirstWhere(int begin, int end, Predicate holds)
{
    while (begin < end) {
        const int middle = begin + (end - begin) / 2;
        if (holds(middle))
            end = middle;
        else
            begin = middle + 1;
    }
    return begin;
}

} // namespace kelmora::px
