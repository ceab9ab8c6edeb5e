// Asio's own functions, compiled here once: as inline functions they cost every file that includes Asio
// seconds.
#include <asio/impl/src.hpp>
