// Boost.URL as a part of the program.
#include <boost/url/src.hpp>
