#ifndef QVIMANAGER_CONSUMER_GREETER_H
#define QVIMANAGER_CONSUMER_GREETER_H

// The interface that the consumer's plug-in implements and its host
// program uses, as a driver's interface is shared by driver and
// application.

#include <qvimanager/components/component.h>

class Greeter : public Utilities::Component {
public:
    virtual Utilities::String Greet(const Utilities::String& whom) = 0;
};

#endif
