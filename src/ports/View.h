#pragma once

#include "support/Geometry.h"

namespace quillox {

/// Something that a container can show. Destroying it takes it off the screen. Main thread only.
class View {
public:
    virtual ~View() = default;
};

/// What a view does when its container changes size; everything that is not named keeps its extent.
struct Autoresizing {
    bool width = false; ///< Distances to both sides are kept.
    bool height = false; ///< Distances to top and bottom are kept.
    bool bottomMargin
        = false; ///< Distance and height from the top are kept; otherwise from the bottom.
    bool leftMargin = false; ///< The distance from the right is kept; with `rightMargin`, both
                             ///< sides give or take the same.
    bool rightMargin = false; ///< The distance from the left is kept, as it is without either.

    bool operator==(const Autoresizing&) const = default;
};

/// A view that stacks others; the one added last is on top.
class Container : public View {
public:
    /// `frame` is in the container's own plane. The view must outlive its stay in the container,
    /// and leaves it when it is destroyed or removed.
    virtual void add(View& view, Rect frame, Autoresizing) = 0;

    /// The same, just below a view that is there.
    virtual void addBelow(View& sibling, View& view, Rect frame, Autoresizing) = 0;

    /// Gives a view that is there another frame, in the container's present plane.
    virtual void move(View& view, Rect frame) = 0;

    /// From now on no other view of the container can have the keyboard or be clicked, whatever it
    /// tries; none frees them all again. A view that has the keyboard loses it.
    virtual void setExclusive(View* view) = 0;
};

} // namespace quillox
