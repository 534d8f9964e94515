// Everything VortUtil offers, in one include. Hosts that care about build times include the
// one family they use instead: <vort/<module>/<Name>.h>.
#ifndef VORT_VORT_H
#define VORT_VORT_H

#include <vort/bones/Any.h>
#include <vort/bones/AtomicCounter.h>
#include <vort/bones/ByteArray.h>
#include <vort/bones/DataObject.h>
#include <vort/bones/Holder.h>
#include <vort/bones/Library.h>
#include <vort/bones/MimeRegistry.h>
#include <vort/bones/ModuleObject.h>
#include <vort/bones/NotifyBlockPasted.h>
#include <vort/bones/StringID.h>
#include <vort/bones/TWrappedObject.h>
#include <vort/bones/VHash.h>
#include <vort/bones/VLinkedList.h>
#include <vort/bones/VList.h>
#include <vort/bones/VMap.h>
#include <vort/bones/VSharedBlock.h>
#include <vort/bones/VVector.h>
#include <vort/command/ChangeLevel.h>
#include <vort/command/Command.h>
#include <vort/command/CommandTarget.h>
#include <vort/err/ErrorDescription.h>
#include <vort/err/ErrorHolder.h>
#include <vort/err/Exception.h>
#include <vort/err/ZQFErrorDescription.h>
#include <vort/messaging/Connection.h>
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Gate.h>
#include <vort/messaging/HostExceptions.h>
#include <vort/messaging/Mutex.h>
#include <vort/messaging/Packet.h>
#include <vort/messaging/ReadWriteLock.h>
#include <vort/messaging/TessarTimer.h>
#include <vort/messaging/Thread.h>
#include <vort/messaging/ThrottledCallback.h>
#include <vort/services/ApplicationContext.h>
#include <vort/services/ErrorHandling.h>
#include <vort/services/EventLoopTickling.h>
#include <vort/services/EventManagement.h>
#include <vort/services/LumigraphClient.h>
#include <vort/services/Printing.h>
#include <vort/services/TWrapperClassRegistry.h>
#include <vort/services/TessarCaller.h>
#include <vort/services/TessarTimerService.h>
#include <vort/services/Translation.h>
#include <vort/services/VTRCCreator.h>
#include <vort/services/VTService.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/MD5Hash.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/Type.h>

#endif  // VORT_VORT_H
