#include "app/stalwick_app.h"
#include "platform/process_setup.h"
#include "platform/program_arguments.h"

int main(int argumentCount, char** arguments) {
    stalwick::PrepareProcess();
    stalwick::StalwickApp app(argumentCount, arguments);  // takes Qt's own arguments away
    return app.InitInstance(stalwick::ProgramArguments(argumentCount, arguments));
}
