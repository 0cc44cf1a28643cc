// Names under which gcov finds the two files of an object, which it looks for side by side.
#pragma once

#include "import/gcc/object_search.h"

#include <cstddef>
#include <string>

/// Gives files that lie apart common names in a directory of its own, which goes away with the object of this
/// class and at the end of the run. There is one at a time.
class object_links {
  public:
    object_links();
    object_links(const object_links&) = delete;
    object_links& operator=(const object_links&) = delete;
    ~object_links();

    /// What gcov is given for an object. `number` tells the objects apart that are read at the same time.
    std::string name_for(const gcc_object& object, std::size_t number);

    /// The object of this number was read.
    void release(std::size_t number);

  private:
    std::string stem(std::size_t number) const { return directory_ + "/" + std::to_string(number); }
    void make_directory();
    void remove_all();
    static void remove_at_exit();

    std::string directory_;   ///< empty until it is needed
    std::size_t numbers_ = 0; ///< all that were used are below
};
