// Asio's and Beast's compiled parts, once for every target that uses them (they are
// otherwise inlined into each file that includes their headers).
#include <boost/asio/impl/src.hpp>
#include <boost/beast/src.hpp>
