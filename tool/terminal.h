// What the terminal, if it is one, can take.
#ifndef WMQ_TOOL_TERMINAL_H
#define WMQ_TOOL_TERMINAL_H

namespace wmq::tool {

// True when `descriptor` is a terminal that understands cursor movement.
bool isCapableTerminal(int descriptor);

// True when `descriptor` is such a terminal and the user has not asked for NO_COLOR.
bool wantsColour(int descriptor);

}  // namespace wmq::tool

#endif
