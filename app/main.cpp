#include "app/stalwick_app.h"

int main(int argumentCount, char** arguments) {
    return stalwick::StalwickApp(argumentCount, arguments).InitInstance();
}
