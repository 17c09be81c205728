#pragma once

namespace VeltoTouch {

// Sets whether clients of the HID event system can be made at all; they can by default. Any thread.
void allowEventSystemClients(bool allowed);

} // namespace VeltoTouch
