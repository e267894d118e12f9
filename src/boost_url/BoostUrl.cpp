// Boost.URL, made here from its headers. Its own library starts the standard streams, which it never uses and
// an extension has no use for: a quarter of a megabyte and some microseconds of every delivery.

#include <boost/url/src.hpp>
