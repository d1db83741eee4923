#include "app/KVApplication.h"

int main(int argc, char *argv[])
{
    KVApplication app(argc, argv);
    return app.run();
}
