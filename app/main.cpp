#include "app/stalwick_app.h"
#include "platform/process_setup.h"

int main(int argumentCount, char** arguments) {
    stalwick::PrepareProcess();
    return stalwick::StalwickApp(argumentCount, arguments).InitInstance();
}
