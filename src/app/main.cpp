#include "ZDApplication.h"

int main(int argc, char *argv[])
{
    return zdApplicationMain(argc, argv);
}
