// The JSON library is used without a library file to link: this is the one place that compiles it.
#include <boost/json/src.hpp>
