// Why something was refused, in words, for the thread that asked. Internal.
#pragma once

// What is told next begins anew.
void ForgetReason();
// Keeps the text as printf makes it; what does not fit is cut off.
__attribute__((format(printf, 1, 2))) void TellReason(const char* format, ...);
// The text; "" for none.
const char* Reason();
