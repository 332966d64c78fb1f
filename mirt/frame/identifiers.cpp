// The identifiers that the module exports.
#include <mirt/mirt.h>

const CLSID CLSID_Mirt = korlib::guid("717FA104-3BC5-4B9E-8112-106B75FD22C4");
const CLSID CLSID_TextTemplator = korlib::guid("6F026685-9E59-4111-9964-05B121FFD6EB");
const CLSID CLSID_Utility = korlib::guid("97F90828-1121-4EF7-98B3-75F95DABFDEB");

const IID IID_IMirt = korlib::iid_of<IMirt>;
const IID IID_IMirtedTemplator = korlib::iid_of<IMirtedTemplator>;
const IID IID_IFormFile = korlib::iid_of<IFormFile>;
const IID IID_ITextTemplator = korlib::iid_of<ITextTemplator>;
const IID IID_IUtility = korlib::iid_of<IUtility>;
