// A thread for an event loop whose owner does not wait: the loop ends by itself when it has nothing left
// to do. From any thread. Private to this folder.
#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <memory>

namespace tarnavelle::interne {

/// Runs the loop on a thread of its own, which keeps its owner alive until the loop is over. `surEchec` is
/// called on that thread for each exception that leaves a handler; the loop goes on. False when no thread
/// is to be had.
///
/// A process that exits stops the loops still at work and waits for them, a second at most: the libraries
/// under them are about to be torn down.
bool lancerBoucle(boost::asio::io_context& boucle, std::shared_ptr<void> proprietaire,
                  std::function<void()> surEchec);

}  // namespace tarnavelle::interne
