// Boost.URL, made here from its headers. Its own library starts the standard streams, which it never uses and
// an extension has no use for: a quarter of a megabyte and some microseconds of every delivery.

#include <boost/config.hpp>

// Its classes ask to be shown by every library that they are in.
#undef BOOST_SYMBOL_VISIBLE
#define BOOST_SYMBOL_VISIBLE

#include <boost/url/src.hpp>
