# The fuzz targets: kor_fuzz_target(NAME libraries…) for NAME.cpp, which defines LLVMFuzzerTestOneInput;
# its corpus is corpus/NAME/. Each is built twice: with libFuzzer here, and as a replay of its corpus by
# tests/fuzz, which every test run does.
kor_fuzz_target(base64_decode mirt_objects korlib)
kor_fuzz_target(html_encode mirt_objects korlib)
kor_fuzz_target(submit_decode mirt_objects korlib)
kor_fuzz_target(url_decode mirt_objects korlib)
