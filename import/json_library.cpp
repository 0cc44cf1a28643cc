// The JSON library is used without a library file to link: this is the one place that compiles it.
#if !__has_include(<boost/json.hpp>)
#error "Boost.JSON is missing: install libboost1.81-dev (Debian 12) or libboost-dev (1.75 or newer)"
#endif

#include <boost/json/src.hpp>
