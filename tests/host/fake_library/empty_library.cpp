// A file that loads and exports nothing of the contract.
extern "C" int NothingOfTheContract()
{
    return 0;
}
