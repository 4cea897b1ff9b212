/* Forced into the picture codecs: setjmp without a frame to unwind to.
 *
 * libjpeg and libpng leave a corrupt picture by longjmp. With a frame, Windows unwinds the stack on
 * the way, through code of hosts and codecs that was not made for it, and has been seen to end the
 * process. Without one, longjmp restores the registers and nothing more, as on other systems. */
#ifndef QOROCV460_SETJMP_WITHOUT_UNWINDING_H
#define QOROCV460_SETJMP_WITHOUT_UNWINDING_H

#include <setjmp.h>
#include <stddef.h>

#undef setjmp
#define setjmp(environment) _setjmp((environment), NULL)

#endif
